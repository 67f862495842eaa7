import * as assert from "node:assert/strict";
import * as fs from "node:fs";
import * as os from "node:os";
import * as path from "node:path";

/** Tests/Samples of the project, as the programs' own tests read them. */
export function sample(name: string): string {
    return fs.readFileSync(path.join(__dirname, "../../../Tests/Samples", name), "utf8");
}

export function temporaryDirectory(): string {
    return fs.mkdtempSync(path.join(os.tmpdir(), "tallowbrook-"));
}

/** Waits until something has become true; a test that waits too long fails. */
export async function waitUntil(isTrue: () => boolean): Promise<void> {
    const deadline = Date.now() + 20_000;
    while (!isTrue()) {
        assert.ok(Date.now() < deadline, `waited too long for ${isTrue.toString()}`);
        await new Promise((resolve) => setTimeout(resolve, 5));
    }
}

/** An id that no process has: beyond the largest that a system gives. */
export const noProcess = 2 ** 22 + 1;

/** The sample of the host's state, written by a process that runs: this one, unless another. */
export function runningState(host = process.pid): string {
    return sample("editor-state-1.json").replace('"hostPid":4242', `"hostPid":${String(host)}`);
}
