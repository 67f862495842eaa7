// The run that Tests/Editor/run describes: node reveal.mjs BROWSER CODE-SERVER PROGRAMS PICTURE
import { execFileSync, spawn } from "node:child_process";
import * as fs from "node:fs";
import * as os from "node:os";
import * as path from "node:path";

import { Page, printed, until } from "./browser.mjs";

const [browser, codeServer, programs, picture] = process.argv
    .slice(2)
    .map((each, index) => (index === 0 ? each : path.resolve(each)));
const root = fs.mkdtempSync(path.join(os.tmpdir(), "tallowbrook-editor-"));
const home = path.join(root, "home");
const project = path.join(root, "checkout-api");
const elsewhere = path.join(root, "docs-site");
for (const directory of [home, project, elsewhere]) fs.mkdirSync(directory);
const userData = path.join(root, "data");
const extensions = path.join(root, "extensions");
fs.mkdirSync(path.join(userData, "User"), { recursive: true });
fs.writeFileSync(
    path.join(userData, "User", "settings.json"),
    JSON.stringify({
        "workbench.startupEditor": "none",
        "workbench.tips.enabled": false,
        "workbench.secondarySideBar.defaultVisibility": "hidden",
        "chat.disableAIFeatures": true,
        "security.workspace.trust.enabled": false,
        "telemetry.telemetryLevel": "off",
        // Rows of text in the page, instead of a drawing of them.
        "terminal.integrated.gpuAcceleration": "off",
        "terminal.integrated.defaultProfile.linux": "bash",
    }),
);
fs.writeFileSync(path.join(home, ".bashrc"), `PS1='\\W$ '\nPATH=${programs}:$PATH\n`);
// The session's events, as its agent hands them over.
fs.writeFileSync(
    path.join(project, "request.json"),
    JSON.stringify({
        session_id: "4b0f6a1e-8c2d-4f37-9d51-7e6a0c9b2f13",
        hook_event_name: "PermissionRequest",
        cwd: project,
        tool_name: "Bash",
    }),
);

const environment = { ...process.env, HOME: home };
for (const name of ["XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "VSCODE_IPC_HOOK_CLI"])
    delete environment[name];
const tallowbrook = path.join(programs, "tallowbrook");
const host = (...given) =>
    execFileSync(tallowbrook, given, { env: environment, encoding: "utf8", cwd: root });
const running = [];
let opened;
const step = (text) => console.log(`editor run: ${text}`);

async function main() {
    const place = ["--user-data-dir", userData, "--extensions-dir", extensions];
    execFileSync(
        process.execPath,
        [codeServer, ...place, "--install-extension", path.join(programs, "tallowbrook.vsix")],
        { env: environment, stdio: "pipe" },
    );
    step("the editor has the extension");

    // First, so that the home is there before the editor's window is.
    const watch = spawn(tallowbrook, ["watch"], { env: environment });
    running.push(watch);
    await printed(watch, "stdout", /No sessions to show/);

    const server = spawn(
        process.execPath,
        [
            codeServer,
            ...place,
            "--auth",
            "none",
            "--disable-telemetry",
            "--disable-update-check",
        ].concat(["--disable-workspace-trust", "--bind-addr", "127.0.0.1:0", project]),
        { env: environment },
    );
    running.push(server);
    const [, address] = await printed(server, "stdout", /listening on (http:\S+)/);
    const page = await Page.open(
        browser,
        path.join(root, "profile"),
        `${address}?folder=${project}`,
    );
    running.push(page.program);
    opened = page;
    const pageHas = (selector, text) =>
        page.evaluate(
            `[...document.querySelectorAll(${JSON.stringify(selector)})].some(` +
                `(each) => each.offsetParent && each.innerText.replaceAll("\\u00a0", " ")` +
                `.includes(${JSON.stringify(text)}))`,
        );
    await until("the workbench", () => pageHas(".statusbar", ""));
    step("the workbench is there");

    const rows = ".terminal-wrapper.active .xterm-rows";
    async function command(name) {
        await page.press("F1", "F1", 112);
        await until("the palette", () => pageHas(".quick-input-widget", ""));
        await page.type(name);
        const focused = ".quick-input-list .monaco-list-row.focused";
        await until(name, () => pageHas(focused, name));
        await page.press("Enter", "Enter", 13);
    }
    async function openTerminal(directory, ...lines) {
        await command("Terminal: Create New Terminal");
        await until("a prompt", () => pageHas(rows, "$"));
        for (const line of [`cd ${directory}; clear`, ...lines]) {
            await page.type(line);
            await page.press("Enter", "Enter", 13);
        }
        await until("the prompt there", () => pageHas(rows, `${path.basename(directory)}$`));
    }
    await openTerminal(
        project,
        'tallowbrook-hook claude-code < request.json; echo "the agent waits here"',
    );
    await until("the report", () => pageHas(rows, "the agent waits here"));
    await until("the status bar", () => pageHas(".statusbar", "1 waiting"));
    step("the status bar says: 1 waiting");
    async function lookElsewhere() {
        await openTerminal(elsewhere, 'echo "another terminal"');
        await until("the other terminal", () => pageHas(rows, "another terminal"));
        if (await pageHas(rows, "the agent waits here")) throw new Error("it is still shown");
    }
    const sessionIsShown = () => pageHas(rows, "the agent waits here");

    await lookElsewhere();
    const state = path.join(home, ".local/share/Tallowbrook/state.json");
    await until("the host to know the shell", () =>
        fs.readFileSync(state, "utf8").includes('"shellPid"'),
    );
    await command("Tallowbrook: Next Waiting Session");
    await until("the session's terminal", sessionIsShown);
    step("the command shows the session's terminal");

    await lookElsewhere();
    step(`focus says: ${host("focus", "1").trim()}`);
    await until("the session's terminal", sessionIsShown);
    step("the page shows the session's terminal");
    fs.writeFileSync(picture, await page.picture());
    step(`the picture is ${path.relative(process.cwd(), picture)}`);
}

let status = 0;
try {
    await main();
} catch (error) {
    console.error(`editor run: FAILED: ${error.message}\n${error.stderr ?? ""}`);
    if (opened) fs.writeFileSync(picture, await opened.picture());
    status = 1;
}
for (const program of running.reverse()) {
    program.kill();
    if (program.exitCode === null && program.signalCode === null)
        await new Promise((resolve) => program.once("exit", resolve));
}
if (status === 0) fs.rmSync(root, { recursive: true, force: true, maxRetries: 5 });
else console.error(`editor run: what it has left is in ${root}`);
process.exit(status);
