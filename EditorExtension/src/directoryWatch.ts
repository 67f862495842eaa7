import * as fs from "fs";

/** Says when something in a directory has changed, for as long as the directory is there. */
export class DirectoryWatch {
    private watcher: fs.FSWatcher | undefined;
    private watched: string | undefined; // what tells the directory from another of its name

    /** @param changed called with the name of what has changed, where the system tells it */
    constructor(
        private readonly directory: string,
        private readonly changed: (name: string | undefined) => void,
    ) {}

    /**
     * Watches the directory that bears the name now; another one may have taken the place of the
     * one that was watched. Calls `changed` when that is so: nothing says what came before.
     */
    refresh(): void {
        let found: string;
        try {
            const { ino, birthtimeMs } = fs.statSync(this.directory);
            // A new directory is often given the number of one that was removed.
            found = `${String(ino)} ${String(birthtimeMs)}`;
        } catch {
            this.close();
            return;
        }
        if (this.watcher !== undefined && found === this.watched) return;
        this.close();
        try {
            const watcher = fs.watch(this.directory, { persistent: false });
            watcher.on("change", (_: string, name: string | Buffer | null) => {
                this.changed(name === null ? undefined : String(name));
            });
            watcher.on("error", () => {
                this.close();
            });
            this.watcher = watcher;
            this.watched = found;
        } catch {
            return; // no watch to be had: the next refresh tries again
        }
        this.changed(undefined);
    }

    close(): void {
        this.watcher?.close();
        this.watcher = undefined;
    }
}
