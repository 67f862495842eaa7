import * as fs from "node:fs";
import { createRequire } from "node:module";
import * as vm from "node:vm";

type Listener = (event: unknown) => void;

class FakeEvent {
    private readonly listeners = new Set<Listener>();

    readonly subscribe = (listener: Listener): { dispose: () => void } => {
        this.listeners.add(listener);
        return { dispose: () => this.listeners.delete(listener) };
    };

    fire(): void {
        for (const listener of this.listeners) listener(undefined);
    }
}

interface FakeTerminal {
    shellPid: number;
    processId: Promise<number | undefined>;
    show: () => void;
}

export interface Shape {
    appName?: string;
    remoteName?: string;
    workspaceFile?: string;
    folders?: string[];
}

/** What the extension asks of an editor's window, and what it has done there. */
export class FakeEditor {
    shown: number[] = [];
    messages: string[] = [];
    offered: { label: string; description: string; detail: string }[] = [];
    pick = 0; // which of the next offered items the user takes
    status: string | undefined; // the text in the status bar, while there is one
    onShow: (shellPid: number) => void = () => undefined;

    private readonly terminals: FakeTerminal[] = [];
    private readonly commands = new Map<string, () => unknown>();
    private readonly subscriptions: { dispose: () => unknown }[] = [];
    private readonly events = {
        onDidOpenTerminal: new FakeEvent(),
        onDidCloseTerminal: new FakeEvent(),
        onDidChangeActiveTerminal: new FakeEvent(),
        onDidChangeWindowState: new FakeEvent(),
        onDidChangeWorkspaceFolders: new FakeEvent(),
    };

    constructor(private readonly shape: Shape = {}) {}

    /** Loads the bundle as an editor does, and activates it. */
    activate(bundle: string): void {
        const inBundle = { exports: {} as { activate?: (context: unknown) => void } };
        // With a `require` of its own: outside of an editor nobody else knows its module.
        const run = vm.compileFunction(
            fs.readFileSync(bundle, "utf8"),
            ["module", "exports", "require"],
            { filename: bundle },
        ) as (...given: unknown[]) => void;
        const require = createRequire(__filename) as (name: string) => unknown;
        run(inBundle, inBundle.exports, (name: string) =>
            name === "vscode" ? this.module() : require(name),
        );
        inBundle.exports.activate?.({ subscriptions: this.subscriptions });
    }

    deactivate(): void {
        for (const each of this.subscriptions.splice(0)) each.dispose();
    }

    openTerminal(shellPid: number): void {
        this.terminals.push({
            shellPid,
            processId: Promise.resolve(shellPid),
            show: () => {
                this.shown.push(shellPid);
                this.onShow(shellPid);
            },
        });
        this.events.onDidOpenTerminal.fire();
    }

    closeTerminal(shellPid: number): void {
        const place = this.terminals.findIndex((terminal) => terminal.shellPid === shellPid);
        this.terminals.splice(place, 1);
        this.events.onDidCloseTerminal.fire();
    }

    comeBackToWindow(): void {
        this.events.onDidChangeWindowState.fire();
    }

    async run(command: string): Promise<void> {
        await this.commands.get(command)?.();
    }

    private module(): unknown {
        const { terminals, shape, events } = this;
        const uri = (file: string): { scheme: string; fsPath: string } =>
            file.startsWith("/")
                ? { scheme: "file", fsPath: file }
                : { scheme: "untitled", fsPath: file };
        return {
            StatusBarAlignment: { Left: 1, Right: 2 },
            env: { appName: shape.appName ?? "Visual Studio Code", remoteName: shape.remoteName },
            commands: {
                registerCommand: (name: string, action: () => unknown) => {
                    this.commands.set(name, action);
                    return { dispose: () => this.commands.delete(name) };
                },
            },
            workspace: {
                workspaceFile:
                    shape.workspaceFile === undefined ? undefined : uri(shape.workspaceFile),
                workspaceFolders: shape.folders?.map((folder) => ({ uri: uri(folder) })),
                onDidChangeWorkspaceFolders: events.onDidChangeWorkspaceFolders.subscribe,
            },
            window: {
                terminals,
                onDidOpenTerminal: events.onDidOpenTerminal.subscribe,
                onDidCloseTerminal: events.onDidCloseTerminal.subscribe,
                onDidChangeActiveTerminal: events.onDidChangeActiveTerminal.subscribe,
                onDidChangeWindowState: events.onDidChangeWindowState.subscribe,
                createStatusBarItem: () => this.statusBarItem(),
                showInformationMessage: (text: string) => {
                    this.messages.push(text);
                    return Promise.resolve(undefined);
                },
                showQuickPick: (items: FakeEditor["offered"]) => {
                    this.offered = items;
                    return Promise.resolve(items[this.pick]);
                },
            },
        };
    }

    private statusBarItem(): unknown {
        const item = {
            text: "",
            show: () => {
                this.status = item.text;
            },
            hide: () => {
                this.status = undefined;
            },
            dispose: () => {
                this.status = undefined;
            },
        };
        return item;
    }
}
