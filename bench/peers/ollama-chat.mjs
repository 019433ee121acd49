// Streams a reply to standard output with the `ollama` package: ollama-chat.mjs NODE_MODULES HOST MODEL
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";

const require = createRequire(pathToFileURL(process.argv[2] + "/").href);
const { Ollama } = require("ollama");

const client = new Ollama({ host: process.argv[3] });
const stream = await client.chat({
    model: process.argv[4],
    messages: [{ role: "user", content: "go" }],
    stream: true,
});
for await (const part of stream) process.stdout.write(part.message.content);
process.stdout.write("\n");
