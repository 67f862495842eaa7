import * as fs from "fs";

export interface SmallFile {
    text: string;
    modifiedAt: number; // milliseconds since 1970
}

// Text that is no UTF-8 must not pass for something else.
const decoder = new TextDecoder("utf-8", { fatal: true });

/**
 * A file of the user's own with at most `maxBytes`. Undefined for everything else: another user's
 * file, a link, a pipe, a larger file, one that is not UTF-8. Never waits.
 */
export function readSmallFile(file: string, maxBytes: number): SmallFile | undefined {
    let descriptor: number | undefined;
    try {
        const { O_RDONLY, O_NOFOLLOW, O_NONBLOCK } = fs.constants;
        descriptor = fs.openSync(file, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        const status = fs.fstatSync(descriptor);
        if (!status.isFile() || status.uid !== process.getuid?.()) return undefined;
        // One byte more than allowed: the file may have grown since it was looked at.
        const buffer = Buffer.alloc(maxBytes + 1);
        let length = 0;
        for (;;) {
            const count = fs.readSync(descriptor, buffer, length, buffer.length - length, null);
            if (count === 0) break;
            length += count;
        }
        if (length > maxBytes) return undefined;
        return { text: decoder.decode(buffer.subarray(0, length)), modifiedAt: status.mtimeMs };
    } catch {
        return undefined;
    } finally {
        if (descriptor !== undefined) fs.closeSync(descriptor);
    }
}

/** The text as a JSON object; undefined for everything else. */
export function parseObject(text: string): Readonly<Record<string, unknown>> | undefined {
    try {
        const value: unknown = JSON.parse(text);
        if (typeof value !== "object" || value === null || Array.isArray(value)) return undefined;
        return value as Record<string, unknown>;
    } catch {
        return undefined;
    }
}

/** Whether the value can be the id of a user's process: process 1 is nobody's. */
export function isProcessId(value: unknown): value is number {
    return Number.isInteger(value) && (value as number) > 1 && (value as number) < 2 ** 31;
}

/** Whether there is such a process, of whatever user. */
export function isRunning(processId: number): boolean {
    try {
        process.kill(processId, 0); // signal 0 only asks
        return true;
    } catch (error) {
        return (error as NodeJS.ErrnoException).code === "EPERM";
    }
}
