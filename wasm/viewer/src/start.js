// start.js: workers out of the page itself. Their script and both builds of the codecs stand in it as text, so that the page works
// from a folder, where a browser fetches nothing, and under a policy that forbids it to fetch anything.
// SPDX-License-Identifier: BSD-2-Clause
import { $ } from "./page.js";

// A function that counts the bits of a vector: an engine without vector instructions finds it faulty.
const VECTORS = Uint8Array.of(
    0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0, 65, 0, 253, 15, 253, 98, 11,
);

function bytesOf(text) {
    const binary = atob(text.replace(/\s+/g, ""));
    return Uint8Array.from(binary, (letter) => letter.charCodeAt(0));
}

/** Gives a function that starts a worker; all share one compiled module. */
export function workerStart() {
    const simd = WebAssembly.validate(VECTORS);
    const module = WebAssembly.compile(bytesOf($(simd ? "#wasm-simd" : "#wasm-plain").textContent));
    const script = URL.createObjectURL(new Blob([$("#worker").textContent], { type: "text/javascript" }));
    return () => {
        const worker = new Worker(script);
        module.then(
            (compiled) => worker.postMessage({ kind: "start", module: compiled, simd }),
            (error) => worker.dispatchEvent(new ErrorEvent("error", { message: error.message })),
        );
        return worker;
    };
}
