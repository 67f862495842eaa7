import * as assert from "node:assert/strict";
import { test } from "node:test";

import { dataHome, SharedFiles } from "../src/dataHome";

function homeOf(platform: string, environment: Record<string, string>): string | undefined {
    return dataHome({ platform, environment, userHome: "/u" });
}

test("the data home is the programs' own", () => {
    assert.equal(homeOf("darwin", {}), "/u/Library/Application Support/Tallowbrook");
    assert.equal(homeOf("linux", {}), "/u/.local/share/Tallowbrook");
    assert.equal(homeOf("linux", { XDG_DATA_HOME: "/data" }), "/data/Tallowbrook");
    assert.equal(homeOf("darwin", { XDG_DATA_HOME: "/data" }), homeOf("darwin", {}));
});

test("an empty or relative data directory counts as unset", () => {
    for (const value of ["", "data", "./data"])
        assert.equal(homeOf("linux", { XDG_DATA_HOME: value }), homeOf("linux", {}));
});

test("an editor packaged as a snap goes by what its terminals have", () => {
    const snap = { XDG_DATA_HOME: "/u/snap/code/1/.local/share" };
    assert.equal(
        homeOf("linux", { ...snap, XDG_DATA_HOME_VSCODE_SNAP_ORIG: "" }),
        homeOf("linux", {}),
    );
    assert.equal(
        homeOf("linux", { ...snap, XDG_DATA_HOME_VSCODE_SNAP_ORIG: "/data" }),
        "/data/Tallowbrook",
    );
});

test("no other system has one", () => {
    assert.equal(homeOf("win32", {}), undefined);
});

test("the shared files have their names below it", () => {
    const files = new SharedFiles("/h");
    assert.equal(files.state, "/h/state.json");
    assert.equal(files.editors, "/h/editors");
    assert.equal(files.requests, "/h/editors/requests");
});
