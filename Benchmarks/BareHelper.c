// The helper's floor: makes the system calls that the helper makes for a payload, in its order, and
// computes nothing. Linked statically, as the helper is.
//   bare-helper HOME     as `tallowbrook-hook claude-code --home HOME`, with the payload on standard input
#define _GNU_SOURCE
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

enum { maxPayloadBytes = 1048576 };

// As long as a usual event.
static const char line[] =
    "{\"adapterVersion\":\"0.1.0\",\"category\":\"activity\",\"channel\":\"hook\",\"cwd\":\"/Users/dev/"
    "Developer/proj\",\"detail\":{\"toolName\":\"Read\"},\"eventType\":\"PostToolUse\",\"id\":"
    "\"00000000-0000-4000-8000-000000000000\",\"observedAt\":\"2026-01-01T00:00:00.000Z\",\"origin\":"
    "\"live\",\"provider\":\"claudeCode\",\"schemaVersion\":1,\"sessionID\":"
    "\"f5fb4509-99d7-4dd1-904d-03e2b5d32756\"}\n";

static void ignore(int number) { (void)number; }

static void arm_watchdog(void) {
    struct sigaction action = {.sa_handler = ignore};
    sigset_t alarm_only;
    sigaction(SIGALRM, &action, 0);
    sigemptyset(&alarm_only);
    sigaddset(&alarm_only, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarm_only, 0);
    alarm(3);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

static void read_payload(void) {
    char* payload = malloc(maxPayloadBytes + 1);
    size_t length = 0;
    ssize_t count;
    if (payload == 0) exit(1);
    while ((count = read(0, payload + length, maxPayloadBytes + 1 - length)) > 0)
        length += (size_t)count;
    free(payload);
}

// Up to the first process, which is as far as the helper goes where there is no terminal.
static void walk_ancestors(void) {
    for (int pid = getpid(); pid > 1;) {
        char path[32], text[512];
        snprintf(path, sizeof path, "/proc/%d/stat", pid);
        const int file = open(path, O_RDONLY | O_CLOEXEC);
        if (file < 0) return;
        const ssize_t count = read(file, text, sizeof text - 1);
        close(file);
        if (count <= 0) return;
        text[count] = 0;
        const char* name_end = strrchr(text, ')');
        int terminal = 0;
        if (name_end == 0 || sscanf(name_end, ") %*c %d %*d %*d %d", &pid, &terminal) != 2) return;
        if (terminal != 0) return;
    }
}

static void append(const char* home) {
    char spool[4096], path[4200];
    struct stat status;
    snprintf(spool, sizeof spool, "%s/spool", home);
    if (stat(spool, &status) != 0) exit(1);
    snprintf(path, sizeof path, "%s/spool.lock", spool);
    int lock = open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (lock < 0) lock = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (lock < 0 || flock(lock, LOCK_EX | LOCK_NB) != 0) exit(1);
    if (fstat(lock, &status) != 0 || stat(path, &status) != 0) exit(1);
    snprintf(path, sizeof path, "%s/events.jsonl", spool);
    stat(path, &status);
    const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0600);
    if (fstat(file, &status) != 0) exit(1);
    if (write(file, line, sizeof line - 1) != (ssize_t)sizeof line - 1) exit(1);
    close(file);
    flock(lock, LOCK_UN);
    close(lock);
}

static void touch_signal(void) {
    char directory[64], path[128];
    struct stat status;
    snprintf(directory, sizeof directory, "/run/user/%u", geteuid());
    if (lstat(directory, &status) != 0) {
        snprintf(directory, sizeof directory, "/tmp/tallowbrook-%u", geteuid());
        stat(directory, &status);
        lstat(directory, &status);
    }
    snprintf(path, sizeof path, "%s/com.tallowbrook.spool.changed", directory);
    utimensat(AT_FDCWD, path, 0, AT_SYMLINK_NOFOLLOW);
}

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    unsigned char id[16];
    arm_watchdog();
    read_payload();
    if (getrandom(id, sizeof id, 0) != sizeof id) return 1;
    walk_ancestors();
    append(argv[1]);
    touch_signal();
    return 0;
}
