// A page in a browser without a screen, driven by the Chrome DevTools Protocol.
import { spawn } from "node:child_process";
import { setTimeout as sleep } from "node:timers/promises";

const patience = 60_000; // milliseconds; a loaded machine takes its time

/** Waits until `look` gives something, and gives that; names what was waited for when it is late. */
export async function until(what, look) {
    const deadline = Date.now() + patience;
    for (;;) {
        const found = await look();
        if (found) return found;
        if (Date.now() > deadline) throw new Error(`waited too long for ${what}`);
        await sleep(100);
    }
}

/** Waits until a program has printed what matches, and gives the match. */
export function printed(program, stream, pattern) {
    let text = "";
    program[stream].on("data", (data) => (text += data));
    return until(String(pattern), () => {
        if (program.exitCode !== null) throw new Error(`a program has ended: ${text}`);
        return pattern.exec(text);
    });
}

export class Page {
    #socket;
    #answers = new Map();
    #last = 0;

    static async open(browser, profile, url) {
        const program = spawn(browser, [
            "--headless=new",
            "--no-sandbox",
            "--disable-gpu",
            "--disable-dev-shm-usage",
            "--no-first-run",
            "--window-size=1000,640",
            `--user-data-dir=${profile}`,
            "--remote-debugging-port=0",
            url,
        ]);
        const [, port] = await printed(program, "stderr", /ws:\/\/127\.0\.0\.1:(\d+)\//);
        const target = await until("the page", async () => {
            const targets = await (await fetch(`http://127.0.0.1:${port}/json`)).json();
            return targets.find((each) => each.type === "page");
        });
        const page = new Page();
        page.program = program;
        page.#socket = new WebSocket(target.webSocketDebuggerUrl);
        page.#socket.onmessage = ({ data }) => {
            const { id, result, error } = JSON.parse(data);
            const answer = page.#answers.get(id);
            page.#answers.delete(id);
            if (error) answer?.reject(new Error(error.message));
            else answer?.resolve(result);
        };
        await new Promise((resolve, reject) => {
            page.#socket.onopen = resolve;
            page.#socket.onerror = reject;
        });
        return page;
    }

    call(method, params = {}) {
        const id = ++this.#last;
        this.#socket.send(JSON.stringify({ id, method, params }));
        return new Promise((resolve, reject) => this.#answers.set(id, { resolve, reject }));
    }

    async evaluate(expression) {
        const { result } = await this.call("Runtime.evaluate", { expression, returnByValue: true });
        return result.value;
    }

    /** Presses a key with modifiers: 1 Alt, 2 Control, 8 Shift. */
    async press(key, code, keyCode, modifiers = 0) {
        const event = { key, code, windowsVirtualKeyCode: keyCode, modifiers };
        await this.call("Input.dispatchKeyEvent", { type: "rawKeyDown", ...event });
        if (key === "Enter")
            await this.call("Input.dispatchKeyEvent", { type: "char", text: "\r", ...event });
        await this.call("Input.dispatchKeyEvent", { type: "keyUp", ...event });
    }

    async type(text) {
        await this.call("Input.insertText", { text });
    }

    async picture() {
        const { data } = await this.call("Page.captureScreenshot", { format: "png" });
        return Buffer.from(data, "base64");
    }

    close() {
        this.#socket.close();
        this.program.kill();
    }
}
