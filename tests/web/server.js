// Serves a folder over loopback.
import { readFile } from 'node:fs/promises';
import http from 'node:http';
import path from 'node:path';

const kTypes = { '.htm': 'text/html', '.css': 'text/css' };

export async function serve(folder) {
    const server = http.createServer(async (request, response) => {
        const name = decodeURIComponent(new URL(request.url, 'http://host').pathname);
        try {
            const content = await readFile(path.join(folder, name));
            response.setHeader('Content-Type', kTypes[path.extname(name)]);
            response.end(content);
        } catch {
            response.writeHead(404).end();
        }
    });
    await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
    return { stop: () => server.close(), url: `http://127.0.0.1:${server.address().port}/` };
}
