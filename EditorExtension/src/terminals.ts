import * as vscode from "vscode";

/** The shells of the window's terminals. */
export class Terminals {
    private readonly shells = new Map<vscode.Terminal, number>();

    constructor(private readonly changed: () => void) {}

    /** Asks each terminal for its shell; the answers come later, as changes. */
    refresh(): void {
        const open = new Set(vscode.window.terminals);
        for (const terminal of this.shells.keys())
            if (!open.has(terminal)) {
                this.shells.delete(terminal);
                this.changed();
            }
        for (const terminal of open)
            terminal.processId.then(
                (shell) => {
                    this.note(terminal, shell);
                },
                () => {
                    this.note(terminal, undefined);
                },
            );
    }

    shellPids(): number[] {
        return [...this.shells.values()];
    }

    has(shellPid: number): boolean {
        return this.shellPids().includes(shellPid);
    }

    /** Shows the terminal with this shell, and gives it the keyboard. */
    show(shellPid: number): void {
        for (const [terminal, shell] of this.shells) if (shell === shellPid) terminal.show();
    }

    private note(terminal: vscode.Terminal, shell: number | undefined): void {
        if (this.shells.get(terminal) === shell) return;
        // The answer may come after the terminal's end.
        if (shell !== undefined && vscode.window.terminals.includes(terminal))
            this.shells.set(terminal, shell);
        else this.shells.delete(terminal);
        this.changed();
    }
}
