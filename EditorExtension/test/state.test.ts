import * as assert from "node:assert/strict";
import * as fs from "node:fs";
import * as path from "node:path";
import { test } from "node:test";

import { nextAfter, reasonText, waitingSessions } from "../src/state";
import { noProcess, runningState, sample, temporaryDirectory } from "./support";

function read(text: string): ReturnType<typeof waitingSessions> {
    const file = path.join(temporaryDirectory(), "state.json");
    fs.writeFileSync(file, text);
    return waitingSessions(file);
}

test("the sessions that wait are read as the host writes them", () => {
    assert.deepEqual(read(runningState()), [
        {
            id: "claudeCode|S2",
            project: 'a "b"',
            agent: "Claude Code",
            reason: "permission",
            cwd: '/src/a "b"',
            shellPid: 850,
        },
        {
            id: "claudeCode|S1",
            project: "proj",
            agent: "Claude Code",
            reason: "permission",
            cwd: "/src/proj",
        },
    ]);
});

test("what a host has left behind that has ended counts for nothing", () => {
    assert.deepEqual(read(runningState(noProcess)), []);
});

test("another schema, and what is no state, counts for nothing", () => {
    const text = runningState();
    for (const other of [
        text.replace('"schema":1', '"schema":2'),
        text.slice(0, -3),
        sample("editor-window-1.json"),
        "",
    ])
        assert.deepEqual(read(other), []);
    assert.deepEqual(waitingSessions(path.join(temporaryDirectory(), "state.json")), []);
});

test("a session that is none spoils no other", () => {
    const text = runningState().replace('"waiting":[', '"waiting":[7,null,{"id":"a"},');
    assert.equal(read(text).length, 2);
});

test("what could not stand in a line of the editor is taken out of the texts", () => {
    const text = runningState().replace('"project":"proj"', '"project":"p\\n\\u001b[1m\\u202ej"');
    assert.equal(read(text)[1]?.project, "p\uFFFD\uFFFD[1m\uFFFDj");
    const long = runningState().replace('"project":"proj"', `"project":"${"p".repeat(5000)}"`);
    assert.equal(read(long)[1]?.project.length, 200);
});

test("each reason has its words, and a new one too", () => {
    const [session] = read(runningState());
    assert.ok(session !== undefined);
    assert.equal(reasonText(session), "needs permission");
    assert.equal(reasonText({ ...session, reason: "question" }), "has a question");
    assert.equal(reasonText({ ...session, reason: "something" }), "waits");
});

test("one session comes after the other, and the first after the last", () => {
    const sessions = read(runningState());
    const [first, last] = sessions;
    assert.equal(nextAfter(sessions, undefined), first);
    assert.equal(nextAfter(sessions, first?.id), last);
    assert.equal(nextAfter(sessions, last?.id), first);
    assert.equal(nextAfter(sessions, "gone"), first);
    assert.equal(nextAfter([], "gone"), undefined);
});
