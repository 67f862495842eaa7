/** Runs an action soon after it was asked for, and no more often than once in `interval` ms. */
export class Throttle {
    private timer: NodeJS.Timeout | undefined;
    private last = -Infinity;

    constructor(
        private readonly interval: number,
        private readonly action: () => void,
    ) {}

    request(): void {
        if (this.timer !== undefined) return;
        const wait = Math.max(0, this.last + this.interval - Date.now());
        // A clock that was set back must not keep the action waiting.
        this.timer = setTimeout(
            () => {
                this.timer = undefined;
                this.last = Date.now();
                this.action();
            },
            Math.min(wait, this.interval),
        );
        this.timer.unref();
    }

    cancel(): void {
        if (this.timer !== undefined) clearTimeout(this.timer);
        this.timer = undefined;
    }
}
