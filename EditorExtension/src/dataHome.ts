import * as path from "path";

export interface Machine {
    platform: string;
    environment: Readonly<Record<string, string | undefined>>;
    userHome: string;
}

// The variable as the editor's terminals have it: an editor packaged as a snap gets directories of
// its own, keeps the user's beside them, and gives its terminals the user's.
function inTerminals(machine: Machine, name: string): string | undefined {
    const original = machine.environment[`${name}_VSCODE_SNAP_ORIG`];
    return original ?? machine.environment[name];
}

/**
 * Where the programs keep their data, by their own rules. Undefined on a system that they do not
 * run on.
 */
export function dataHome(machine: Machine): string | undefined {
    if (machine.platform === "darwin")
        return path.join(machine.userHome, "Library", "Application Support", "Tallowbrook");
    if (machine.platform !== "linux") return undefined;
    // The XDG base directory rules: an empty or relative value counts as unset.
    const data = inTerminals(machine, "XDG_DATA_HOME");
    if (data?.startsWith("/") === true) return path.join(data, "Tallowbrook");
    return path.join(machine.userHome, ".local", "share", "Tallowbrook");
}

/** The names below the data home that the extension shares with the programs. */
export class SharedFiles {
    readonly state: string;
    readonly editors: string;
    readonly requests: string;

    constructor(readonly home: string) {
        this.state = path.join(home, "state.json");
        this.editors = path.join(home, "editors");
        this.requests = path.join(home, "editors", "requests");
    }
}
