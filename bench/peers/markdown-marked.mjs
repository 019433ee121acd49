// Splits a Markdown file into tokens with the npm package marked, again and again, and prints the median time of
// one parse in milliseconds: markdown-marked.mjs NODE_MODULES FILE
import { readFileSync } from "node:fs";
import { pathToFileURL } from "node:url";

const [modules, file] = process.argv.slice(2);
const { marked } = await import(pathToFileURL(`${modules}/marked/lib/marked.esm.js`));
const text = readFileSync(file, "utf8");
const times = [];
for (let round = 0; round < 150; ++round) {
    const started = performance.now();
    marked.lexer(text);
    // The first rounds let the compiler warm up.
    if (round >= 50) times.push(performance.now() - started);
}
times.sort((a, b) => a - b);
process.stdout.write(`${times[times.length / 2]}\n`);
