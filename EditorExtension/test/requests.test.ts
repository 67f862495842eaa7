import * as assert from "node:assert/strict";
import * as fs from "node:fs";
import * as path from "node:path";
import { test } from "node:test";

import { takeRequests } from "../src/requests";
import { sample, temporaryDirectory } from "./support";

const name = "0B4E28BA-2FA1-41D2-883F-0016D3CCA427.json";

function write(text: string, as = name, ageSeconds = 0): { directory: string; file: string } {
    const directory = temporaryDirectory();
    const file = path.join(directory, as);
    fs.writeFileSync(file, text);
    const time = Date.now() / 1000 - ageSeconds;
    fs.utimesSync(file, time, time);
    return { directory, file };
}

function take(directory: string, ours = [4242]): number[] {
    return takeRequests(directory, (shellPid) => ours.includes(shellPid));
}

test("a request for a shell of the window is taken, once", () => {
    const { directory, file } = write(sample("editor-request-1.json"));
    assert.deepEqual(take(directory), [4242]);
    assert.ok(!fs.existsSync(file));
    assert.deepEqual(take(directory), []);
});

test("a request for another window's shell is left to it", () => {
    const { directory, file } = write(sample("editor-request-1.json"));
    assert.deepEqual(take(directory, [4243]), []);
    assert.ok(fs.existsSync(file));
});

test("a request acts for ten seconds", () => {
    const text = sample("editor-request-1.json");
    assert.deepEqual(take(write(text, name, 8).directory), [4242]);
    assert.deepEqual(take(write(text, name, 11).directory), []);
    assert.deepEqual(take(write(text, name, -11).directory), []);
});

test("what is no request is left alone", () => {
    const text = sample("editor-request-1.json");
    for (const [what, contents, as] of [
        ["empty", "", name],
        ["cut off", text.slice(0, -1), name],
        ["a list", "[4242]", name],
        ["a number as text", '{"shellPid":"4242"}', name],
        ["a fraction", '{"shellPid":4242.5}', name],
        ["process 1", '{"shellPid":1}', name],
        ["a group of processes", '{"shellPid":-4242}', name],
        ["beyond 32 bits", '{"shellPid":4294971538}', name],
        ["too large", text + " ".repeat(300), name],
        ["another name", text, "request.json"],
        ["unfinished", text, `${name}.unfinished`],
        ["a hidden name", text, `.${name}`],
    ] as const) {
        const { directory, file } = write(contents, as);
        const taken = takeRequests(directory, () => true);
        assert.deepEqual(taken, [], what);
        assert.ok(fs.existsSync(file), what);
    }
});

test("a link is no request, and neither is a directory", () => {
    const { file } = write(sample("editor-request-1.json"), "elsewhere");
    const directory = temporaryDirectory();
    fs.symlinkSync(file, path.join(directory, name));
    fs.mkdirSync(path.join(directory, name.replace("0B", "0C")));
    assert.deepEqual(take(directory), []);
    assert.equal(fs.readdirSync(directory).length, 2);
});

test("another user's request is ignored", { skip: process.getuid?.() !== 0 }, () => {
    const { directory, file } = write(sample("editor-request-1.json"));
    fs.chownSync(file, 12345, 12345);
    assert.deepEqual(take(directory), []);
});

test("a directory that is not there holds no requests", () => {
    assert.deepEqual(take(path.join(temporaryDirectory(), "missing")), []);
});
