import * as fs from "fs";
import * as path from "path";

import { isProcessId, parseObject, readSmallFile } from "./smallFile";

const requestLifetime = 10_000; // milliseconds, as the programs have it
const maxRequestBytes = 256;
const requestName = /^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\.json$/;

/** The shell whose terminal a file asks for; undefined for what is no request, or is too old. */
export function requestedShell(file: string, now: number): number | undefined {
    if (!requestName.test(path.basename(file))) return undefined;
    const request = readSmallFile(file, maxRequestBytes);
    // A time that lies ahead was set by a clock that tells nothing of the request's age.
    if (request === undefined || Math.abs(now - request.modifiedAt) > requestLifetime)
        return undefined;
    const shellPid = parseObject(request.text)?.shellPid;
    return isProcessId(shellPid) ? shellPid : undefined;
}

/**
 * Removes the requests for shells of this window from the directory, and gives those shells. All
 * other files stay: they are another window's, or the programs remove them when they are too old.
 */
export function takeRequests(
    directory: string,
    isOurs: (shellPid: number) => boolean,
    now: number = Date.now(),
): number[] {
    let entries: string[];
    try {
        entries = fs.readdirSync(directory);
    } catch {
        return [];
    }
    const taken: number[] = [];
    for (const name of entries) {
        const file = path.join(directory, name);
        const shellPid = requestedShell(file, now);
        if (shellPid === undefined || !isOurs(shellPid)) continue;
        try {
            // First of all: to remove the file is what takes the request, and a program that has
            // withdrawn it does something else instead.
            fs.unlinkSync(file);
            taken.push(shellPid);
        } catch {
            // Withdrawn in the last moment.
        }
    }
    return taken;
}
