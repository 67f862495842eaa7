import { isProcessId, isRunning, parseObject, readSmallFile } from "./smallFile";

/** A session that waits for the user, as the host tells it. */
export interface WaitingSession {
    id: string;
    project: string;
    agent: string;
    reason: string;
    cwd?: string;
    shellPid?: number; // of the editor's terminal that it runs in, where the host knows it
}

const maxStateBytes = 1 << 20;
const maxTextLength = 200;

// Names of directories may hold anything; a line of the editor's own is no place for it.
function printable(value: unknown): string | undefined {
    if (typeof value !== "string" || value === "") return undefined;
    const text = value.replace(/[\p{Cc}\p{Cf}\p{Cs}\u2028\u2029]/gu, "\uFFFD");
    return text.length > maxTextLength ? `${text.slice(0, maxTextLength - 1)}…` : text;
}

function decodeSession(value: unknown): WaitingSession | undefined {
    if (typeof value !== "object" || value === null) return undefined;
    const { id, project, agent, reason, cwd, shellPid } = value as Record<string, unknown>;
    const shown = {
        id: typeof id === "string" ? id : undefined,
        project: printable(project),
        agent: printable(agent),
        reason: printable(reason),
    };
    if (shown.id === undefined || shown.project === undefined) return undefined;
    if (shown.agent === undefined || shown.reason === undefined) return undefined;
    const directory = printable(cwd);
    return {
        id: shown.id,
        project: shown.project,
        agent: shown.agent,
        reason: shown.reason,
        ...(directory === undefined ? {} : { cwd: directory }),
        ...(isProcessId(shellPid) ? { shellPid } : {}),
    };
}

/**
 * The sessions that wait, the longest first. None where no host watches: what one has left behind
 * may be long over.
 */
export function waitingSessions(file: string): WaitingSession[] {
    const text = readSmallFile(file, maxStateBytes)?.text;
    const state = text === undefined ? undefined : parseObject(text);
    if (state?.schema !== 1 || !Array.isArray(state.waiting)) return [];
    if (!isProcessId(state.hostPid) || !isRunning(state.hostPid)) return [];
    return state.waiting
        .map(decodeSession)
        .filter((session): session is WaitingSession => session !== undefined);
}

const reasons = new Map([
    ["permission", "needs permission"],
    ["input", "needs input"],
    ["question", "has a question"],
    ["plan", "has a plan"],
]);

/** "needs permission" */
export function reasonText(session: WaitingSession): string {
    return reasons.get(session.reason) ?? "waits";
}

/** The session that comes after `id`, from the beginning again after the last one. */
export function nextAfter(
    sessions: readonly WaitingSession[],
    id: string | undefined,
): WaitingSession | undefined {
    const place = sessions.findIndex((session) => session.id === id);
    return sessions[(place + 1) % sessions.length];
}
