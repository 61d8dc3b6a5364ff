// pool.js: a few workers and the queue before them. A job is told by its kind; the most urgent one is done first, what is no longer
// wanted is taken out, and a worker that fell is replaced.
// SPDX-License-Identifier: BSD-2-Clause

const URGENCY = { pixel: 0, tile: 1, look: 2, save: 3, convert: 4 };

/** What a job rejects with when nobody wants it any more. */
export class Cancelled extends Error {}

export class Pool {
    /** `start` makes a worker that is being loaded. */
    constructor(start, count) {
        this.start = start;
        this.lanes = Array.from({ length: count }, () => ({ worker: null, job: null }));
        this.queue = [];
        this.numbers = 0;
    }

    /** `pin` is the only worker that may do the job; `heavy` says that it is worth ending one for a job that nobody wants. */
    run(job) {
        return new Promise((resolve, reject) => {
            this.queue.push({ ...job, id: ++this.numbers, resolve, reject });
            this.sort();
            this.next();
        });
    }

    sort() {
        this.queue.sort((a, b) => URGENCY[a.kind] - URGENCY[b.kind] || (a.order ?? a.id) - (b.order ?? b.id));
    }

    /** Puts jobs ahead of others of their kind. */
    hurry(test) {
        for (const job of this.queue) if (test(job)) job.order = -1;
        this.sort();
    }

    /** Takes jobs out of the queue; with `running`, also ends workers at heavy ones. */
    cancel(test, running = false) {
        const gone = this.queue.filter(test);
        this.queue = this.queue.filter((job) => !gone.includes(job));
        for (const lane of this.lanes) {
            if (running && lane.job?.heavy && test(lane.job)) {
                gone.push(lane.job);
                this.end(lane);
            }
        }
        gone.forEach((job) => job.reject(new Cancelled()));
        this.next();
    }

    may(job, lane) {
        if (job.pin !== undefined) return job.pin === lane;
        // The first worker stays free for what is being looked at.
        return lane > 0 || URGENCY[job.kind] < URGENCY.save || this.lanes.length === 1;
    }

    next() {
        this.lanes.forEach((lane, number) => {
            if (lane.job) return;
            const at = this.queue.findIndex((job) => this.may(job, number));
            if (at < 0) return;
            [lane.job] = this.queue.splice(at, 1);
            const { resolve, reject, ...message } = lane.job;
            lane.worker ??= this.begin(lane);
            lane.worker.postMessage(message);
        });
    }

    begin(lane) {
        const worker = this.start();
        worker.onmessage = ({ data }) => data.id && this.done(lane, data);
        worker.onerror = (event) => {
            event.preventDefault();
            this.done(lane, { error: event.message || "the decoder stopped", fatal: true });
        };
        return worker;
    }

    end(lane) {
        lane.worker?.terminate();
        lane.worker = lane.job = null;
    }

    done(lane, { result, error, fatal }) {
        const job = lane.job;
        lane.job = null;
        if (fatal) this.end(lane);
        if (error !== undefined) job?.reject(new Error(error));
        else job?.resolve(result);
        this.next();
    }
}
