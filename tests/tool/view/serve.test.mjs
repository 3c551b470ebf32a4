// The server as any client sees it.
import assert from "node:assert/strict";
import { once } from "node:events";
import { appendFileSync, readFileSync, truncateSync } from "node:fs";
import { request } from "node:http";
import { connect } from "node:net";
import { networkInterfaces } from "node:os";
import { after, before, describe, test } from "node:test";
import { H264, cells, makeClip, makePicture, run, scratchFolder, startServer } from "./tool.mjs";

// Paths go out as they are given; a client library would tidy them up.
async function ask(address, path, { method = "GET", headers = {} } = {}) {
  const { port } = new URL(address);
  const sent = request({ host: "127.0.0.1", port, path, method, headers }).end();
  const [answer] = await once(sent, "response");
  const pieces = [];
  for await (const piece of answer) pieces.push(piece);
  return { status: answer.statusCode, headers: answer.headers, body: Buffer.concat(pieces) };
}

function connectTo(server) {
  const socket = connect({ host: "127.0.0.1", port: new URL(server.address).port });
  socket.on("error", () => {});
  return socket;
}

describe("the server", () => {
  let server, bytes, folder, size;
  before(async () => {
    folder = scratchFolder();
    makePicture(folder("panorama.png"));
    makePicture(folder("painted.png"), cells(3));
    bytes = readFileSync(folder("panorama.png"));
    size = bytes.length;
    server = await startServer(folder("panorama.png"), "--show-seams", folder("painted.png"), "--serve", "0");
  });
  after(() => server.stop());

  const get = (headers, method = "GET") => ask(server.address, "/panorama.png", { headers, method });

  test("serves the page, the panorama and the seams", async () => {
    const page = await ask(server.address, "/");
    assert.equal(page.status, 200);
    assert.equal(page.headers["content-type"], "text/html; charset=utf-8");
    assert.ok(page.body.includes('"address":"panorama.png"') && page.body.includes('"address":"seams.png"'));
    const whole = await get({});
    assert.equal(whole.status, 200);
    assert.equal(whole.headers["content-type"], "image/png");
    assert.equal(whole.headers["accept-ranges"], "bytes");
    assert.ok(whole.body.equals(bytes));
    const seams = await ask(server.address, "/seams.png");
    assert.ok(seams.body.equals(readFileSync(folder("painted.png"))));
  });

  test("answers 206 with exactly the range that was asked for", async () => {
    const cases = [["0-0", 0, 0], ["0-99", 0, 99], ["100-199", 100, 199], ["100-", 100, size - 1], ["-1", size - 1, size - 1]];
    cases.push(["-100", size - 100, size - 1], [`-${size * 2}`, 0, size - 1], [`5-${size * 9}`, 5, size - 1], [`${size - 1}-`, size - 1, size - 1]);
    cases.push(["7-99999999999999999999999", 7, size - 1]);
    for (const [range, first, last] of cases) {
      const answer = await get({ Range: `bytes=${range}` });
      assert.equal(answer.status, 206, range);
      assert.equal(answer.headers["content-range"], `bytes ${first}-${last}/${size}`);
      assert.equal(answer.headers["content-length"], String(last - first + 1));
      assert.ok(answer.body.equals(bytes.subarray(first, last + 1)), range);
    }
  });

  test("answers 416 when nothing is within the range", async () => {
    for (const range of [`${size}-`, `${size}-${size + 5}`, "-0", "99999999999999999999999-"]) {
      const answer = await get({ Range: `bytes=${range}` });
      assert.equal(answer.status, 416, range);
      assert.equal(answer.headers["content-range"], `bytes */${size}`);
      assert.equal(answer.body.length, 0);
    }
  });

  test("ignores ranges that it does not understand", async () => {
    for (const range of ["bytes=", "bytes=-", "bytes=a-b", "bytes=9-1", "bytes=0-1,5-6", "bytes=+1-2", "bytes= 1-2", "lines=0-1", "0-1"]) {
      const answer = await get({ Range: range });
      assert.equal(answer.status, 200, range);
      assert.ok(answer.body.equals(bytes), range);
    }
  });

  test("honours If-Range", async () => {
    const tag = (await get({})).headers.etag;
    assert.match(tag, /^".+"$/);
    assert.equal((await get({ Range: "bytes=1-2", "If-Range": tag })).status, 206);
    for (const other of ['"another"', `W/${tag}`, "Sat, 01 Jan 2000 00:00:00 GMT"]) {
      const answer = await get({ Range: "bytes=1-2", "If-Range": other });
      assert.equal(answer.status, 200);
      assert.ok(answer.body.equals(bytes));
    }
  });

  test("answers HEAD with the headers of GET", async () => {
    const answer = await get({}, "HEAD");
    assert.equal(answer.status, 200);
    assert.equal(answer.headers["content-length"], String(size));
    assert.equal(answer.headers["accept-ranges"], "bytes");
    assert.equal(answer.body.length, 0);
    assert.equal((await ask(server.address, "/elsewhere", { method: "HEAD" })).status, 404);
  });

  test("has nothing but its own addresses", async () => {
    const own = folder("panorama.png");
    const paths = ["/favicon.ico", "/panorama.jpg", "/panorama.png/", "//panorama.png", "/../panorama.png", own, `/..${own}`];
    paths.push("/../../../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "/..%2f..%2fetc%2fpasswd", "/./panorama.png", "/panorama.png%00");
    for (const path of paths) assert.equal((await ask(server.address, path)).status, 404, path);
  });

  test("changes nothing: other methods are 405", async () => {
    for (const method of ["POST", "PUT", "DELETE", "OPTIONS"]) {
      const answer = await get({}, method);
      assert.equal(answer.status, 405, method);
      assert.equal(answer.headers.allow, "GET, HEAD");
    }
    assert.ok(readFileSync(folder("panorama.png")).equals(bytes));
  });

  test("listens on the loopback address alone", async () => {
    const { port, hostname } = new URL(server.address);
    assert.equal(hostname, "127.0.0.1");
    const others = Object.values(networkInterfaces()).flat().filter(({ internal, family }) => !internal && family === "IPv4");
    for (const host of [...others.map(({ address }) => address), "127.0.0.2"]) {
      const socket = connect({ host, port });
      await assert.rejects(once(socket, "connect"), { code: "ECONNREFUSED" }, host);
    }
  });

  test("answers to its own names alone", async () => {
    const { port } = new URL(server.address);
    const status = async (host) => (await ask(server.address, "/", { headers: { host } })).status;
    for (const host of [`127.0.0.1:${port}`, `localhost:${port}`, `LOCALHOST:${port}`, `[::1]:${port}`]) {
      assert.equal(await status(host), 200, host);
    }
    const others = ["127.0.0.1", "localhost", `127.0.0.1:${Number(port) + 1}`, `example.org:${port}`, "example.org", `127.0.0.2:${port}`];
    others.push(`127.0.0.1.example.org:${port}`, `me@localhost:${port}`);
    for (const host of others) assert.equal(await status(host), 421, host);
    const nameless = connectTo(server);
    nameless.write("GET / HTTP/1.0\r\n\r\n");
    const [answer] = await once(nameless, "data");
    assert.match(answer.toString(), /^HTTP\/1\.[01] 421 /);
    nameless.destroy();
  });

  test("says when a port is taken, and takes the one it is given", async () => {
    const { port } = new URL(server.address);
    const second = run("view", folder("panorama.png"), "--serve", port);
    assert.equal(second.status, 4);
    assert.match(second.stderr, new RegExp(`^biseam: port ${port}: can't be listened on: .*\n$`));
  });
});

describe("a server's patience", () => {
  let server, size;
  before(async () => {
    const folder = scratchFolder();
    makeClip(folder("clip.mp4"), H264);
    size = 200 * 2 ** 20; // more than any buffer between takes
    truncateSync(folder("clip.mp4"), size);
    server = await startServer(folder("clip.mp4"), "--serve", "0");
  });
  after(() => server.stop());

  test("isn't used up by 1500 visitors who say nothing", async () => {
    const idle = Array.from({ length: 1500 }, () => connectTo(server));
    await Promise.all(idle.map((socket) => once(socket, "connect")));
    const begin = performance.now();
    assert.equal((await ask(server.address, "/")).status, 200);
    const range = await ask(server.address, "/panorama.mp4", { headers: { Range: "bytes=0-9" } });
    assert.equal(range.body.length, 10);
    assert.ok(performance.now() - begin < 3000);
    for (const socket of idle) socket.destroy();
  });

  test("ends for those who are slow", { timeout: 60000 }, async () => {
    const { host } = new URL(server.address);
    const get = `GET /panorama.mp4 HTTP/1.1\r\nHost: ${host}\r\n`;
    const begin = performance.now();
    const seconds = (socket) => once(socket, "close").then(() => (performance.now() - begin) / 1000);

    const idle = connectTo(server), afterwards = connectTo(server), dripping = connectTo(server), halfClosed = connectTo(server);
    const impatient = [idle, afterwards, dripping, halfClosed].map((socket) => seconds(socket.resume()));
    afterwards.write(`${get}Range: bytes=0-9\r\n\r\n`);
    dripping.write(get);
    const drops = setInterval(() => dripping.write("a"), 300);
    halfClosed.end(get);
    const stalled = connectTo(server); // nothing is read until somebody listens for data
    const stalledEnd = seconds(stalled);
    stalled.write(`${get}\r\n`);

    for (const time of await Promise.all(impatient)) assert.ok(time < 15, `${time} seconds`);
    clearInterval(drops);
    await new Promise((resolve) => setTimeout(resolve, 30000 - (performance.now() - begin)));
    let bytes = 0;
    stalled.on("data", (piece) => (bytes += piece.length));
    await stalledEnd;
    assert.ok(bytes > 0 && bytes < size, `${bytes} bytes`);
  });
});

describe("a server's end", () => {
  for (const signal of ["SIGINT", "SIGTERM"]) {
    test(`is clean on ${signal}, with a client that waits`, async () => {
      const folder = scratchFolder();
      makePicture(folder("panorama.png"));
      const server = await startServer("--serve", folder("panorama.png"));
      const socket = connect({ host: "127.0.0.1", port: new URL(server.address).port });
      await once(socket, "connect");
      socket.on("error", () => {});
      socket.write("GET / HTTP/1.1\r\n");
      assert.equal(await server.stop(signal), 0);
      socket.destroy();
    });
  }
});

describe("a large file", () => {
  test("is refused for a page and served all the same", async () => {
    const folder = scratchFolder();
    const clip = folder("clip.mp4");
    makeClip(clip, H264);
    const gap = 600 * 2 ** 20;
    const header = Buffer.from([gap >>> 24, (gap >>> 16) & 255, (gap >>> 8) & 255, gap & 255, ...Buffer.from("free")]);
    const size = readFileSync(clip).length + gap;
    appendFileSync(clip, header);
    truncateSync(clip, size); // a box to be skipped, without a byte on disk
    const page = run("view", clip, "-o", folder("page.html"));
    assert.equal(page.status, 3);
    assert.match(page.stderr, /600 MiB are too many for one page \(512 MiB\); --serve/);
    const server = await startServer(clip, "--serve");
    const answer = await ask(server.address, "/panorama.mp4", { headers: { Range: `bytes=${size - 3}-` } });
    assert.equal(answer.headers["content-range"], `bytes ${size - 3}-${size - 1}/${size}`);
    assert.deepEqual([...answer.body], [0, 0, 0]);
    assert.equal(await server.stop(), 0);
  });
});
