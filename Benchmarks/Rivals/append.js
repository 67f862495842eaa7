#!/usr/bin/env node
// What people write for the same job: one line appended, of the few members that matter.
const fs = require("fs");
const payload = JSON.parse(fs.readFileSync(0, "utf8"));
const event = {
  event: payload.hook_event_name,
  session: payload.session_id,
  cwd: payload.cwd,
  at: new Date().toISOString(),
};
fs.appendFileSync(process.argv[2], JSON.stringify(event) + "\n");
