import * as assert from "node:assert/strict";
import * as fs from "node:fs";
import * as path from "node:path";
import { test } from "node:test";

import { decodeRecord, encodeRecord, publishedWindows, RecordFile } from "../src/windowRecord";
import { noProcess, sample, temporaryDirectory } from "./support";

const window = { appName: "Cursor", folders: ["/a"], shellPids: [7, 8] };

test("a record is coded as the programs code it", () => {
    for (const name of ["editor-window-1.json", "editor-window-2.json"]) {
        const text = sample(name);
        const record = decodeRecord(text);
        assert.ok(record !== undefined, name);
        assert.equal(encodeRecord(record), text);
    }
});

test("a record without one of its members, or with another type, is none", () => {
    const text = sample("editor-window-1.json");
    for (const [from, to] of [
        ['"hostPid":4242,', ""],
        ["4242", '"4242"'],
        ["4242", "1"],
        ['"appName":"Visual Studio Code",', ""],
        ['"folders"', '"Folders"'],
        ["[10,850]", "[10.5]"],
        ["[10,850]", "10"],
        ['"/Users/x/proj.code-workspace"', "3"],
    ] as const) {
        assert.ok(text.includes(from));
        assert.equal(decodeRecord(text.replace(from, to)), undefined, `${from} as ${to}`);
    }
    for (const other of ["", "[]", "null", text.slice(1)])
        assert.equal(decodeRecord(other), undefined);
});

test("half a character in a path does not spoil the record", () => {
    const text = encodeRecord({ hostPid: 5, appName: "a", folders: ["/x\uD83D"], shellPids: [] });
    assert.ok(text.includes("/x\uFFFD"));
});

test("a record is there whole, for its owner alone, with nothing beside it", () => {
    const directory = temporaryDirectory();
    const file = new RecordFile(directory, process.pid, undefined);
    file.publish(window);
    assert.deepEqual(fs.readdirSync(directory), [path.basename(file.path)]);
    assert.equal(fs.statSync(file.path).mode & 0o777, 0o600);
    assert.deepEqual(publishedWindows(directory), [{ hostPid: process.pid, ...window }]);
    file.remove();
    assert.deepEqual(fs.readdirSync(directory), []);
});

test("the same record is not written twice, and is written anew where it was removed", () => {
    const directory = temporaryDirectory();
    const file = new RecordFile(directory, process.pid, undefined);
    file.publish(window);
    const inode = fs.statSync(file.path).ino;
    file.publish(window);
    assert.equal(fs.statSync(file.path).ino, inode);
    fs.unlinkSync(file.path);
    file.publish(window);
    assert.ok(fs.existsSync(file.path));
});

test("what a crash left unfinished does not stop the next record", () => {
    const directory = temporaryDirectory();
    const file = new RecordFile(directory, process.pid, undefined);
    fs.writeFileSync(`${file.path}.unfinished`, "half");
    file.publish(window);
    assert.deepEqual(fs.readdirSync(directory), [path.basename(file.path)]);
});

test("the name of a record tells how its window reaches the machine", () => {
    const directory = temporaryDirectory();
    const nameOf = (remote: string | undefined): string =>
        path.basename(new RecordFile(directory, 77, remote).path);
    assert.match(nameOf(undefined), /^window-[0-9a-f]{8}-77\.json$/);
    assert.match(nameOf("ssh-remote"), /^window-ssh-remote-[0-9a-f]{8}-77\.json$/);
    assert.match(nameOf("../x y"), /^window-xy-[0-9a-f]{8}-77\.json$/);
});

test("records of windows that have ended on this machine are swept, and no others", () => {
    const directory = temporaryDirectory();
    for (const remote of [undefined, "wsl"])
        new RecordFile(directory, noProcess, remote).publish(window);
    const alive = new RecordFile(directory, process.pid, undefined);
    alive.publish(window);
    const others = [`window-00000000-${String(noProcess)}.json`, `${String(noProcess)}.json`];
    for (const name of others) fs.writeFileSync(path.join(directory, name), "");
    alive.sweep();
    assert.deepEqual(
        fs.readdirSync(directory).sort(),
        [...others, path.basename(alive.path)].sort(),
    );
});

test("windows of editors that have ended are not found", () => {
    const directory = temporaryDirectory();
    new RecordFile(directory, noProcess, undefined).publish(window);
    assert.deepEqual(publishedWindows(directory), []);
    assert.deepEqual(publishedWindows(path.join(directory, "missing")), []);
});
