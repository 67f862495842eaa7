#!/usr/bin/env python3
# What people write for the same job: one line appended, of the few members that matter.
import datetime
import json
import sys

payload = json.load(sys.stdin)
event = {
    "event": payload.get("hook_event_name"),
    "session": payload.get("session_id"),
    "cwd": payload.get("cwd"),
    "at": datetime.datetime.now(datetime.timezone.utc).isoformat(),
}
with open(sys.argv[1], "a") as log:
    log.write(json.dumps(event) + "\n")
