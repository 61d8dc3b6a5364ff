// bundle.mjs: ES modules into one script that imports nothing, for a page that stands alone. Each module becomes a function that
// gives what it exports, called once, ahead of those that import it. It knows the forms of import and export that our modules
// use, and refuses others.
// SPDX-License-Identifier: BSD-2-Clause
import { readFile } from "node:fs/promises";
import { dirname, resolve } from "node:path";

const IMPORT = /^import\s+(?:(\w+)|\*\s+as\s+(\w+)|\{([^}]*)\})\s+from\s+"([^"]+)";/gm;
const DECLARED = /^export\s+(?=(?:async\s+)?(?:function\*?|class|const|let)\s+([\w$]+))/gm;
const LISTED = /^export\s*\{([^}]*)\}(?:\s*from\s+"([^"]+)")?;/gm;

/** "a, b as c" as pairs of names. */
function pairs(list) {
    return list.split(",").map((one) => one.trim()).filter(Boolean).map((one) => {
        const [from, to = from] = one.split(/\s+as\s+/);
        return [from, to];
    });
}

/** The code of a module without its imports and exports, what it imports, and what it exports. */
function takeApart(text, path) {
    const needs = [];
    const exported = [];
    let code = text.replace(IMPORT, (_, whole, all, list, from) => {
        needs.push(from);
        const module = `$module(${JSON.stringify(from)})`;
        if (whole) return `const ${whole} = ${module}.default;`;
        if (all) return `const ${all} = ${module};`;
        return `const { ${pairs(list).map(([a, b]) => (a === b ? a : `${a}: ${b}`)).join(", ")} } = ${module};`;
    });
    code = code.replace(LISTED, (_, list, from) => {
        if (from) needs.push(from);
        for (const [a, b] of pairs(list)) exported.push(`get ${b}() { return ${from ? `$module(${JSON.stringify(from)}).` : ""}${a}; }`);
        return "";
    });
    code = code.replace(DECLARED, (_, name) => {
        exported.push(`get ${name}() { return ${name}; }`);
        return "";
    });
    const left = code.match(/^(?:import\b(?!\s*\()|export\b).*/m);
    if (left) throw new Error(`${path}: the bundler does not know: ${left[0]}`);
    // A page and a worker that stand alone have no module address; nothing is loaded by it there.
    return { code: code.replaceAll("import.meta.url", "self.location.href"), needs, exported };
}

/** One script of the module at `entry`; `bare` gives the path for each import that is not relative. */
export async function bundle(entry, bare = {}) {
    const numbers = new Map(); // path: its number, or undefined while its imports are being read
    const parts = [];

    async function add(path) {
        if (numbers.has(path)) {
            if (numbers.get(path) === undefined) throw new Error(`${path} imports itself by way of others`);
            return;
        }
        numbers.set(path, undefined);
        const { code, needs, exported } = takeApart(await readFile(path, "utf8"), path);
        const found = {};
        for (const need of needs) {
            found[need] = bare[need] ?? (need.startsWith(".") ? resolve(dirname(path), need) : undefined);
            if (!found[need]) throw new Error(`${path}: where is ${need}?`);
            await add(found[need]);
        }
        numbers.set(path, parts.length);
        const own = code.replace(/\$module\(("[^"]+")\)/g, (_, name) => `$${numbers.get(found[JSON.parse(name)])}`);
        parts.push(`const $${parts.length} = (() => {\n${own}\nreturn { ${exported.join(", ")} };\n})();`);
    }

    await add(entry);
    return `"use strict";\n${parts.join("\n")}\n`;
}
