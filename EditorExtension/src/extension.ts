import * as fs from "fs";
import * as os from "os";
import * as vscode from "vscode";

import { dataHome, SharedFiles } from "./dataHome";
import { DirectoryWatch } from "./directoryWatch";
import { takeRequests } from "./requests";
import { Terminals } from "./terminals";
import { Throttle } from "./throttle";
import { WaitingEntry } from "./waitingEntry";
import { RecordFile } from "./windowRecord";

const publishInterval = 250; // milliseconds; a workspace may open many terminals at once

class Window implements vscode.Disposable {
    private readonly terminals = new Terminals(() => {
        this.publishing.request();
    });
    private readonly entry = new WaitingEntry(this.files, this.terminals);
    private readonly publishing = new Throttle(publishInterval, () => {
        this.publish();
    });
    // The extensions' process: it ends with the window, also where the editor itself runs on
    // another machine.
    private readonly record = new RecordFile(
        this.files.editors,
        process.pid,
        vscode.env.remoteName,
    );
    private readonly requests = new DirectoryWatch(this.files.requests, () => {
        this.answerRequests();
    });
    private readonly state = new DirectoryWatch(this.files.home, (name) => {
        if (name === undefined || name === "state.json") this.entry.refresh();
    });

    constructor(private readonly files: SharedFiles) {
        this.record.sweep();
    }

    /** What is done whenever something happens in the window; nothing is done in between. */
    lookAround(): void {
        this.terminals.refresh();
        this.state.refresh();
        this.entry.refresh();
        this.publishing.request();
    }

    choose(): Promise<void> {
        return this.entry.choose();
    }

    next(): void {
        this.entry.next();
    }

    dispose(): void {
        this.publishing.cancel();
        this.requests.close();
        this.state.close();
        this.record.remove();
        this.entry.dispose();
    }

    private publish(): void {
        // The home is the programs' to make: without them nobody reads the record, and a home that
        // was removed is to stay so.
        if (!fs.existsSync(this.files.home)) return;
        try {
            fs.mkdirSync(this.files.requests, { recursive: true, mode: 0o700 });
            this.record.publish({
                appName: vscode.env.appName,
                ...workspaceFile(),
                folders: folders(),
                shellPids: this.terminals.shellPids(),
            });
        } catch {
            return; // a full disk, or a home of another user: the next change tries again
        }
        this.requests.refresh();
        // A request may have come before its shell was known here.
        this.answerRequests();
    }

    private answerRequests(): void {
        const isOurs = (shellPid: number): boolean => this.terminals.has(shellPid);
        for (const shellPid of takeRequests(this.files.requests, isOurs))
            this.terminals.show(shellPid);
    }
}

function workspaceFile(): { workspace?: string } {
    const file = vscode.workspace.workspaceFile;
    // One that was never saved has no path by which it could be opened.
    return file?.scheme === "file" ? { workspace: file.fsPath } : {};
}

function folders(): string[] {
    return (vscode.workspace.workspaceFolders ?? [])
        .filter((folder) => folder.uri.scheme === "file")
        .map((folder) => folder.uri.fsPath);
}

export function activate(context: vscode.ExtensionContext): void {
    const home = dataHome({
        platform: process.platform,
        environment: process.env,
        userHome: os.homedir(),
    });
    if (home === undefined) return;
    const window = new Window(new SharedFiles(home));
    const lookAround = (): void => {
        window.lookAround();
    };
    context.subscriptions.push(
        window,
        vscode.window.onDidOpenTerminal(lookAround),
        vscode.window.onDidCloseTerminal(lookAround),
        vscode.window.onDidChangeActiveTerminal(lookAround),
        // The user comes back to the window: meanwhile the home may have been made.
        vscode.window.onDidChangeWindowState(lookAround),
        vscode.workspace.onDidChangeWorkspaceFolders(lookAround),
        vscode.commands.registerCommand("tallowbrook.showWaiting", () => window.choose()),
        vscode.commands.registerCommand("tallowbrook.nextWaiting", () => {
            window.next();
        }),
    );
    lookAround();
}
