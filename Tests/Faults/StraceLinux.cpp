#include "StraceLinux.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <set>

#include "Support/FileContents.h"
#include "TestBuild.h"

namespace tallowbrook {
namespace {

using Strace::program;

constexpr const char* sleepCall = "clock_nanosleep";

ProgramCall traced(const ProgramCall& call, std::vector<std::string> options) {
    ProgramCall outer = call;
    outer.program = program;
    options.push_back(call.program);
    options.insert(options.end(), call.arguments.begin(), call.arguments.end());
    outer.arguments = std::move(options);
    return outer;
}

// "4242  write(1, "x", 1) = 1": with -f each line begins with the process. Signals and the end of a
// process are no calls.
std::optional<SystemCall> parseLine(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of("0123456789 "), line.size()));
    const std::size_t open = line.find('(');
    if (line.empty() || std::isalpha(static_cast<unsigned char>(line[0])) == 0 || open == line.npos)
        return std::nullopt;
    return SystemCall{std::string{line.substr(0, open)}, 0, std::string{line}};
}

// The mark stands at the call that was asked for, and of once only there.
bool wasInjected(const Fault& fault, const ProgramResult& result,
                 const std::filesystem::path& traceFile) {
    if (fault.effect == "signal=KILL") return result.status == -1;
    // The trace of a program that had to be ended may be endless as well.
    if (result.status == -1) return false;
    bool wasMet = false;
    for (const auto& call : Strace::parse(contentsOf(traceFile))) {
        if (call.name != fault.call) continue;
        const bool isMarked = call.text.find("(INJECTED)") != std::string::npos;
        const bool isMeant = call.occurrence == fault.occurrence ||
                             (fault.forEver && call.occurrence > fault.occurrence);
        if (isMarked != isMeant) return false;
        wasMet = wasMet || isMarked;
    }
    return wasMet;
}

// "clock_nanosleep(CLOCK_REALTIME, 0, {tv_sec=0, tv_nsec=5000000}, NULL) = 0"
double sleptSeconds(const std::filesystem::path& traceFile) {
    double sum = 0;
    for (const auto& call : Strace::parse(contentsOf(traceFile))) {
        if (call.name != sleepCall) continue;
        const auto numberBehind = [&](std::string_view mark) {
            const std::size_t start = call.text.find(mark);
            return start == std::string::npos ? 0.0 : std::atof(&call.text[start + mark.size()]);
        };
        sum += numberBehind("tv_sec=") + numberBehind("tv_nsec=") / 1e9;
    }
    return sum;
}

}  // namespace

std::string Fault::text() const {
    return call + ":" + effect + ":when=" + std::to_string(occurrence) + (forEver ? "+" : "");
}

std::optional<std::string> Strace::reasonToSkip() {
    if (isSanitized) return "a program with sanitizers cannot be traced and makes too many calls";
    if (!std::filesystem::exists(program)) return std::string{"there is no "} + program;
    const ProgramResult probe =
        run({.program = program, .arguments = {"-f", "-qq", "-o", "/dev/null", "/bin/true"}});
    if (probe.status == 0) return std::nullopt;
    return "no process may be traced here: " + probe.errors;
}

std::vector<SystemCall> Strace::parse(std::string_view trace) {
    std::map<std::string, int> counts;
    std::vector<SystemCall> calls;
    while (!trace.empty()) {
        const std::string_view line = trace.substr(0, trace.find('\n'));
        trace.remove_prefix(std::min(line.size() + 1, trace.size()));
        if (auto call = parseLine(line)) {
            call->occurrence = ++counts[call->name];
            calls.push_back(std::move(*call));
        }
    }
    return calls;
}

std::vector<SystemCall> Strace::callsOf(const ProgramCall& call) {
    const TemporaryDirectory directory;
    const std::string file = directory.path / "trace";
    run(traced(call, {"-f", "-qq", "-s", "256", "-o", file}));
    return parse(contentsOf(file));
}

FaultyRun Strace::runWith(const Fault& fault, const ProgramCall& call) {
    return FaultyProgram{call, fault}.wait();
}

FaultyProgram::FaultyProgram(const ProgramCall& call, Fault fault)
    : fault_{std::move(fault)},
      program_{traced(
          call, {"-f", "-qq", "-o", traceFile_, "-e", "trace=" + fault_.call + "," + sleepCall,
                 "-e", "inject=" + fault_.text()})} {}

FaultyRun FaultyProgram::wait() {
    FaultyRun faulty;
    faulty.result = program_.wait();
    faulty.wasInjected = wasInjected(fault_, faulty.result, traceFile_);
    faulty.sleptSeconds = sleptSeconds(traceFile_);
    return faulty;
}

std::vector<SystemCall> evenlySpread(
    const std::vector<SystemCall>& calls, std::size_t ofAName,
    const std::function<bool(const SystemCall& call)>& isImportant) {
    std::map<std::string, std::vector<std::size_t>> places;
    for (std::size_t i = 0; i < calls.size(); ++i) places[calls[i].name].push_back(i);
    std::set<std::size_t> chosen;
    for (const auto& [name, of] : places) {
        const std::size_t count = std::min(ofAName, of.size());
        for (std::size_t i = 0; i < count; ++i)
            chosen.insert(of[count == 1 ? 0 : i * (of.size() - 1) / (count - 1)]);
    }
    std::vector<SystemCall> result;
    for (std::size_t i = 0; i < calls.size(); ++i)
        if (chosen.contains(i) || isImportant(calls[i])) result.push_back(calls[i]);
    return result;
}

std::vector<std::string> fittingErrors(const std::string& call) {
    static const std::map<std::string, std::vector<std::string>> errors{
        {"access", {"error=EACCES"}},
        // The kernel answers a refusal with an end of the heap that is not the one asked for.
        {"brk", {"retval=0"}},
        {"chmod", {"error=EPERM", "error=EIO"}},
        {"clock_nanosleep", {"error=EINTR"}},
        {"close", {"error=EIO", "error=EINTR"}},
        {"execve", {}},
        {"exit_group", {}},
        {"alarm", {}},
        {"fchmod", {"error=EPERM", "error=EIO"}},
        {"fchown", {"error=EPERM"}},
        {"fcntl", {"error=EIO", "error=EAGAIN", "error=ENOLCK"}},
        {"fdatasync", {"error=EIO", "error=ENOSPC"}},
        {"flock", {"error=EAGAIN", "error=ENOLCK", "error=EINTR"}},
        {"fstat", {"error=EIO"}},
        {"fsync", {"error=EIO", "error=ENOSPC"}},
        {"ftruncate", {"error=EIO", "error=ENOSPC"}},
        {"futex", {}},
        {"getcwd", {"error=ENOENT"}},
        {"getdents64", {"error=EIO"}},
        {"geteuid", {}},
        {"getpid", {}},
        {"getrandom", {"error=ENOSYS", "error=EINTR"}},
        {"getuid", {}},
        {"inotify_add_watch", {"error=ENOSPC", "error=EACCES"}},
        {"inotify_init1", {"error=EMFILE"}},
        {"ioctl", {"error=ENOTTY"}},
        {"lseek", {"error=ESPIPE"}},
        {"lstat", {"error=EACCES", "error=EIO"}},
        {"mkdir", {"error=ENOSPC", "error=EACCES", "error=EROFS"}},
        {"mmap", {"error=ENOMEM"}},
        {"mprotect", {"error=ENOMEM"}},
        {"munmap", {"error=ENOMEM"}},
        {"newfstatat", {"error=EIO", "error=EACCES"}},
        {"openat", {"error=EMFILE", "error=EACCES", "error=ENOSPC", "error=EINTR", "error=EIO"}},
        {"pipe2", {"error=EMFILE"}},
        {"poll", {"error=EINTR"}},
        {"pread64", {"error=EIO", "error=EINTR"}},
        {"pwrite64", {"error=ENOSPC", "error=EIO", "error=EINTR"}},
        {"read", {"error=EIO", "error=EINTR"}},
        {"readlink", {"error=EACCES"}},
        {"rename", {"error=EIO", "error=EACCES", "error=ENOSPC"}},
        {"rt_sigaction", {"error=EINVAL"}},
        {"rt_sigprocmask", {"error=EINVAL"}},
        {"stat", {"error=EIO", "error=EACCES"}},
        {"truncate", {"error=EIO", "error=EACCES"}},
        {"unlink", {"error=EIO", "error=EACCES"}},
        {"utimensat", {"error=EACCES", "error=EROFS"}},
        {"write", {"error=ENOSPC", "error=EIO", "error=EINTR", "error=EDQUOT", "error=EAGAIN"}},
    };
    const auto found = errors.find(call);
    return found == errors.end() ? std::vector<std::string>{"error=EIO"} : found->second;
}

}  // namespace tallowbrook
