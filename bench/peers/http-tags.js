// Prints the names of the installed models with Node's own HTTP client: http-tags.js URL
const http = require("http");

http.get(process.argv[2], (response) => {
    let body = "";
    response.on("data", (piece) => (body += piece));
    response.on("end", () => {
        for (const model of JSON.parse(body).models) process.stdout.write(model.name + "\n");
    });
});
