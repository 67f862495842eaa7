import * as crypto from "crypto";
import * as fs from "fs";
import * as os from "os";
import * as path from "path";

import { isProcessId, isRunning, parseObject, readSmallFile } from "./smallFile";

/** One window of an editor, as the programs read it. */
export interface WindowRecord {
    hostPid: number; // a process that lives exactly as long as the window
    appName: string;
    workspace?: string; // the path of the workspace file
    folders: string[];
    shellPids: number[];
}

const maxRecordBytes = 1 << 20;

// A program in another container may share the directory and know other processes by our numbers.
function machineTag(): string {
    let processes = "";
    try {
        processes = fs.readlinkSync("/proc/self/ns/pid");
    } catch {
        // A system without such a link has one space of process ids.
    }
    const hash = crypto.createHash("sha256").update(`${os.hostname()}\n${processes}`);
    return hash.digest("hex").slice(0, 8);
}

// Half a character would make the programs refuse the whole record.
function wellFormed(text: string): string {
    return Buffer.from(text, "utf8").toString("utf8");
}

export function encodeRecord(record: WindowRecord): string {
    return JSON.stringify({
        appName: wellFormed(record.appName),
        folders: record.folders.map(wellFormed),
        hostPid: record.hostPid,
        shellPids: record.shellPids,
        workspace: record.workspace === undefined ? undefined : wellFormed(record.workspace),
    });
}

const isText = (value: unknown): value is string => typeof value === "string";

/** Undefined for a text that the programs would pass over, too. */
export function decodeRecord(text: string): WindowRecord | undefined {
    const record = parseObject(text);
    if (record === undefined) return undefined;
    const { hostPid, appName, folders, shellPids } = record;
    const workspace = record.workspace ?? undefined;
    if (!isProcessId(hostPid) || !isText(appName)) return undefined;
    if (workspace !== undefined && !isText(workspace)) return undefined;
    if (!Array.isArray(folders) || !folders.every(isText)) return undefined;
    if (!Array.isArray(shellPids) || !shellPids.every((pid) => Number.isInteger(pid)))
        return undefined;
    return {
        hostPid,
        appName,
        ...(workspace === undefined ? {} : { workspace }),
        folders,
        shellPids: shellPids as number[],
    };
}

/** The windows that are published in a directory, of editors that still run. */
export function publishedWindows(directory: string): WindowRecord[] {
    return names(directory)
        .filter((name) => name.startsWith("window-") && name.endsWith(".json"))
        .map((name) => readSmallFile(path.join(directory, name), maxRecordBytes))
        .map((file) => (file === undefined ? undefined : decodeRecord(file.text)))
        .filter((record): record is WindowRecord => record !== undefined)
        .filter((record) => isRunning(record.hostPid));
}

function names(directory: string): string[] {
    try {
        return fs.readdirSync(directory);
    } catch {
        return [];
    }
}

/** The file that tells the programs of one window. */
export class RecordFile {
    readonly path: string;
    private readonly tag = machineTag();
    private written: string | undefined;

    /**
     * @param remote how the window reaches this machine ("ssh-remote"), where the editor itself
     *     runs on another one
     */
    constructor(
        private readonly directory: string,
        private readonly hostPid: number,
        remote: string | undefined,
    ) {
        const way = (remote ?? "").replace(/[^A-Za-z0-9-]/g, "").slice(0, 40);
        const parts = ["window", ...(way === "" ? [] : [way]), this.tag, String(hostPid)];
        this.path = path.join(directory, `${parts.join("-")}.json`);
    }

    /**
     * Writes the record, whole at once, unless it is there already. The directory must be there.
     * Throws what the system says when the file cannot be written.
     */
    publish(record: Omit<WindowRecord, "hostPid">): void {
        const text = encodeRecord({ ...record, hostPid: this.hostPid });
        if (text === this.written && fs.existsSync(this.path)) return;
        const unfinished = `${this.path}.unfinished`;
        fs.rmSync(unfinished, { force: true });
        const descriptor = fs.openSync(unfinished, "wx", 0o600);
        try {
            fs.writeFileSync(descriptor, text);
        } finally {
            fs.closeSync(descriptor);
        }
        fs.renameSync(unfinished, this.path);
        this.written = text;
    }

    remove(): void {
        this.written = undefined;
        for (const file of [this.path, `${this.path}.unfinished`]) fs.rmSync(file, { force: true });
    }

    /** Removes what windows on this machine have left behind that were not closed in order. */
    sweep(): void {
        const ours = new RegExp(`^window-.*\\b${this.tag}-(\\d+)\\.json(\\.unfinished)?$`);
        for (const name of names(this.directory)) {
            const processId = ours.exec(name)?.[1];
            if (processId !== undefined && !isRunning(Number(processId)))
                fs.rmSync(path.join(this.directory, name), { force: true });
        }
    }
}
