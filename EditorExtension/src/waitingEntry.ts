import * as vscode from "vscode";

import { nextAfter, reasonText, WaitingSession, waitingSessions } from "./state";
import { Terminals } from "./terminals";
import { publishedWindows } from "./windowRecord";
import { SharedFiles } from "./dataHome";

// "$(…)" in a label would be an icon.
function label(text: string): string {
    return text.replace(/\$\(/g, "\\$(");
}

/** The entry in the status bar, and the two commands on the sessions that wait. */
export class WaitingEntry {
    private readonly item = vscode.window.createStatusBarItem(
        "tallowbrook.waiting",
        vscode.StatusBarAlignment.Left,
    );
    private sessions: WaitingSession[] = [];
    private shownLast: string | undefined;

    constructor(
        private readonly files: SharedFiles,
        private readonly terminals: Terminals,
    ) {
        this.item.name = "Tallowbrook";
        this.item.command = "tallowbrook.showWaiting";
    }

    refresh(): void {
        this.sessions = waitingSessions(this.files.state);
        if (this.sessions.length === 0) {
            this.item.hide();
            return;
        }
        this.item.text = `${String(this.sessions.length)} waiting`;
        this.item.tooltip = this.sessions
            .map((session) => `${session.project}: ${session.agent} ${reasonText(session)}`)
            .join("\n");
        this.item.show();
    }

    async choose(): Promise<void> {
        this.refresh();
        if (this.sessions.length === 0) {
            this.sayThatNoneWaits();
            return;
        }
        const picked = await vscode.window.showQuickPick(
            this.sessions.map((session) => ({
                label: label(session.project),
                description: label(`${session.agent} ${reasonText(session)}`),
                detail: this.isHere(session) ? "In this window" : label(this.whereabouts(session)),
                session,
            })),
            { placeHolder: "Sessions that wait for you" },
        );
        if (picked !== undefined) this.show(picked.session);
    }

    next(): void {
        this.refresh();
        const session = nextAfter(this.sessions, this.shownLast);
        if (session === undefined) this.sayThatNoneWaits();
        else this.show(session);
    }

    dispose(): void {
        this.item.dispose();
    }

    private show(session: WaitingSession): void {
        this.shownLast = session.id;
        if (session.shellPid !== undefined && this.isHere(session)) {
            this.terminals.show(session.shellPid);
            return;
        }
        void vscode.window.showInformationMessage(
            `${session.project}: ${session.agent} ${reasonText(session)}. ` +
                `${this.whereabouts(session)}.`,
        );
    }

    private isHere(session: WaitingSession): boolean {
        return session.shellPid !== undefined && this.terminals.has(session.shellPid);
    }

    private whereabouts(session: WaitingSession): string {
        const { shellPid } = session;
        const owner = publishedWindows(this.files.editors).find(
            (record) => shellPid !== undefined && record.shellPids.includes(shellPid),
        );
        if (owner !== undefined) {
            const shown = owner.workspace ?? owner.folders.join(", ");
            return `In another window of ${owner.appName}${shown === "" ? "" : `: ${shown}`}`;
        }
        return session.cwd === undefined
            ? "Not in a terminal of this window"
            : `Not in a terminal of this window; it works in ${session.cwd}`;
    }

    private sayThatNoneWaits(): void {
        void vscode.window.showInformationMessage("No session waits for you.");
    }
}
