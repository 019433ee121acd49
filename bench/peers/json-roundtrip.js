// node json-roundtrip.js FILE TARGET: reads a JSON file and writes it again as the program formats it; prints the
// milliseconds of processor time that parsing and writing took, reading and saving of the bytes left out.
const fs = require('fs');

const [source, target] = process.argv.slice(2);
const text = fs.readFileSync(source, 'utf8');
const before = process.cpuUsage();
const written = JSON.stringify(JSON.parse(text), null, 2);
const used = process.cpuUsage(before);
fs.writeFileSync(target, written);
console.log((used.user + used.system) / 1000);
