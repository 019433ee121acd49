// node json-roundtrip.js FILE TARGET: reads a JSON file and writes it again as the program formats it, synced and
// renamed; prints the milliseconds of processor time of the whole, and of parsing and writing text alone.
const fs = require("fs");

const [source, target] = process.argv.slice(2);
const milliseconds = (used) => (used.user + used.system) / 1000;
const begin = process.cpuUsage();
const text = fs.readFileSync(source, "utf8");
const parsing = process.cpuUsage();
const written = JSON.stringify(JSON.parse(text), null, 2);
const alone = milliseconds(process.cpuUsage(parsing));
const file = fs.openSync(target + ".saving", "w", 0o600);
fs.writeFileSync(file, written);
fs.fdatasyncSync(file);
fs.closeSync(file);
fs.renameSync(target + ".saving", target);
console.log(milliseconds(process.cpuUsage(begin)), alone);
