import * as assert from "node:assert/strict";
import * as fs from "node:fs";
import * as os from "node:os";
import * as path from "node:path";
import { afterEach, beforeEach, test } from "node:test";

import { dataHome, SharedFiles } from "../src/dataHome";
import { publishedWindows, WindowRecord } from "../src/windowRecord";
import { FakeEditor, Shape } from "./fakeEditor";
import { runningState, sample, temporaryDirectory, waitUntil } from "./support";

const bundle = path.join(__dirname, "..", "extension.js");
let files: SharedFiles;
let editors: FakeEditor[];

beforeEach(() => {
    process.env.HOME = temporaryDirectory();
    delete process.env.XDG_DATA_HOME;
    const home = dataHome({
        platform: process.platform,
        environment: process.env,
        userHome: os.homedir(),
    });
    assert.ok(home !== undefined);
    assert.ok(home.startsWith(process.env.HOME));
    files = new SharedFiles(home);
    fs.mkdirSync(home, { recursive: true });
    editors = [];
});

afterEach(() => {
    for (const editor of editors) editor.deactivate();
});

function open(shape: Shape = {}, ...shells: number[]): FakeEditor {
    const editor = new FakeEditor(shape);
    editors.push(editor);
    editor.activate(bundle);
    for (const shell of shells) editor.openTerminal(shell);
    return editor;
}

function record(): WindowRecord | undefined {
    return publishedWindows(files.editors)[0];
}

function shellsArePublished(...shells: number[]): Promise<void> {
    return waitUntil(() => String(record()?.shellPids) === String(shells));
}

function request(shellPid: number): string {
    const file = path.join(files.requests, "0B4E28BA-2FA1-41D2-883F-0016D3CCA427.json");
    fs.writeFileSync(file, sample("editor-request-1.json").replace("4242", String(shellPid)));
    return file;
}

test("a window publishes what it shows, and its shells as they come and go", async () => {
    const editor = open({ appName: "Cursor", folders: ["/src/a", "/src/b"] }, 4242, 4243);
    await shellsArePublished(4242, 4243);
    assert.deepEqual(record(), {
        hostPid: process.pid,
        appName: "Cursor",
        folders: ["/src/a", "/src/b"],
        shellPids: [4242, 4243],
    });
    editor.closeTerminal(4242);
    await shellsArePublished(4243);
});

test("a workspace is published by its file, unless it was never saved", async () => {
    open({ workspaceFile: "/src/a.code-workspace" }, 4242);
    await shellsArePublished(4242);
    assert.equal(record()?.workspace, "/src/a.code-workspace");
    open({ workspaceFile: "Untitled-1" }, 4243);
    await shellsArePublished(4243);
    assert.equal(record()?.workspace, undefined);
});

test("a closed window leaves nothing behind", async () => {
    const editor = open({}, 4242);
    await shellsArePublished(4242);
    editor.deactivate();
    assert.deepEqual(fs.readdirSync(files.editors), ["requests"]);
});

test("a terminal is shown when it is asked for, and the request is taken", async () => {
    const editor = open({}, 4242, 4243);
    await shellsArePublished(4242, 4243);
    const file = request(4243);
    await waitUntil(() => editor.shown.length > 0);
    assert.deepEqual(editor.shown, [4243]);
    assert.ok(!fs.existsSync(file));
});

test("a request that came before its terminal was known is answered then", async () => {
    const editor = open({}, 4242);
    await shellsArePublished(4242);
    const file = request(4243);
    editor.openTerminal(4243);
    await waitUntil(() => editor.shown.length > 0);
    assert.deepEqual(editor.shown, [4243]);
    assert.ok(!fs.existsSync(file));
});

test("requests are answered also after their directory was removed and made anew", async () => {
    const editor = open({}, 4242);
    await shellsArePublished(4242);
    fs.rmSync(files.editors, { recursive: true });
    editor.comeBackToWindow();
    await shellsArePublished(4242);
    request(4242);
    await waitUntil(() => editor.shown.length > 0);
});

test("without the programs' home nothing is published until it is there", async () => {
    fs.rmdirSync(files.home);
    const editor = open({}, 4242);
    // Longer than the extension waits before it publishes.
    await new Promise((resolve) => setTimeout(resolve, 600));
    assert.ok(!fs.existsSync(files.home));
    fs.mkdirSync(files.home);
    editor.comeBackToWindow();
    await shellsArePublished(4242);
});

test("many terminals at once are published in a few writes", async () => {
    const writes = new Set<number>();
    const editor = open({}, 4242);
    await shellsArePublished(4242);
    const watcher = fs.watch(files.editors, () => {
        for (const name of fs.readdirSync(files.editors))
            if (name.endsWith(".json")) writes.add(fs.statSync(path.join(files.editors, name)).ino);
    });
    const shells = Array.from({ length: 50 }, (_, index) => 5000 + index);
    for (const shell of shells) editor.openTerminal(shell);
    await shellsArePublished(4242, ...shells);
    watcher.close();
    assert.ok(writes.size <= 3, `${String(writes.size)} writes`);
});

function writeState(text: string): void {
    fs.writeFileSync(`${files.state}.unfinished`, text);
    fs.renameSync(`${files.state}.unfinished`, files.state);
}

test("the status bar counts the sessions that wait, while any does", async () => {
    const editor = open({}, 850);
    await shellsArePublished(850);
    assert.equal(editor.status, undefined);
    writeState(runningState());
    await waitUntil(() => editor.status === "2 waiting");
    writeState(runningState().replace(/"waiting":\[.*\]/, '"waiting":[]'));
    await waitUntil(() => editor.status === undefined);
    writeState(runningState());
    await waitUntil(() => editor.status === "2 waiting");
    fs.unlinkSync(files.state);
    await waitUntil(() => editor.status === undefined);
});

test("of the sessions that are listed, one in this window is shown", async () => {
    const editor = open({}, 850);
    await shellsArePublished(850);
    writeState(runningState());
    await editor.run("tallowbrook.showWaiting");
    assert.deepEqual(
        editor.offered.map(({ label, description, detail }) => [label, description, detail]),
        [
            ['a "b"', "Claude Code needs permission", "In this window"],
            [
                "proj",
                "Claude Code needs permission",
                "Not in a terminal of this window; it works in /src/proj",
            ],
        ],
    );
    assert.deepEqual(editor.shown, [850]);
    assert.deepEqual(editor.messages, []);
});

test("of one that is elsewhere the editor says where", async () => {
    const editor = open({}, 851);
    await shellsArePublished(851);
    writeState(runningState());
    fs.writeFileSync(
        path.join(files.editors, "window-other.json"),
        sample("editor-window-1.json").replace("4242", String(process.ppid)),
    );
    await editor.run("tallowbrook.nextWaiting");
    await editor.run("tallowbrook.nextWaiting");
    assert.deepEqual(editor.shown, []);
    assert.deepEqual(editor.messages, [
        'a "b": Claude Code needs permission. In another window of Visual Studio Code: ' +
            "/Users/x/proj.code-workspace.",
        "proj: Claude Code needs permission. Not in a terminal of this window; it works in " +
            "/src/proj.",
    ]);
});

test("the commands say so where no session waits", async () => {
    const editor = open();
    await editor.run("tallowbrook.nextWaiting");
    await editor.run("tallowbrook.showWaiting");
    assert.deepEqual(editor.messages, ["No session waits for you.", "No session waits for you."]);
    assert.deepEqual(editor.offered, []);
});

test("a name cannot draw an icon in the list", async () => {
    const editor = open();
    writeState(runningState().replace('"project":"proj"', '"project":"$(trash)"'));
    await editor.run("tallowbrook.showWaiting");
    assert.equal(editor.offered[1]?.label, "\\$(trash)");
});
