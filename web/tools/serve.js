// serve.js [PORT]: hands web/dist/ out on this machine alone.
import { serve } from "./server.js";

const port = Number(process.argv[2] ?? 8080);
serve(new URL("../dist/", import.meta.url).pathname, port).then(
    () => console.log(`Tesserae is at http://127.0.0.1:${port}/ until Ctrl-C.`),
    (problem) => {
        console.error(`It cannot be served on port ${port}: ${problem.message}`);
        process.exit(1);
    },
);
