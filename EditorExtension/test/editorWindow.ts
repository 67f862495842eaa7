// A window of an editor as a program, for tests of the other side: it runs the extension's bundle
// with a terminal for each shell, and prints what the extension shows.
//
//   node editorWindow.js BUNDLE SHELL…
//
// It ends, as a window that is closed, with its standard input.
import { FakeEditor } from "./fakeEditor";

const [bundle = "", ...shells] = process.argv.slice(2);
const editor = new FakeEditor({ folders: [process.cwd()] });
editor.onShow = (shellPid) => process.stdout.write(`shown ${String(shellPid)}\n`);
editor.activate(bundle);
for (const shell of shells) editor.openTerminal(Number(shell));
process.stdout.write("open\n");
process.stdin.resume();
process.stdin.on("end", () => {
    editor.deactivate();
});
