#include "DiskRecordingLinux.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "StraceLinux.h"
#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {
namespace {

// With a question mark: not every processor has it. The last line holds what the model does not
// know, so that it is noticed.
constexpr const char* recordedCalls =
    "?open,?creat,openat,?mkdir,mkdirat,?rmdir,?unlink,unlinkat,?rename,?renameat,renameat2,"
    "write,pwrite64,truncate,ftruncate,fsync,fdatasync,"
    "?link,linkat,?symlink,symlinkat,fallocate,writev,pwritev,copy_file_range,sendfile";

std::string decoded(std::string_view hex) {
    std::string bytes;
    bytes.reserve(hex.size() / 4 + 1);
    while (!hex.empty()) {
        unsigned value = 0;
        if (hex.size() >= 4 && hex[0] == '\\' && hex[1] == 'x') {
            std::from_chars(hex.data() + 2, hex.data() + 4, value, 16);
            bytes += static_cast<char>(value);
            hex.remove_prefix(4);
        } else {
            bytes += hex[0];
            hex.remove_prefix(1);
        }
    }
    return bytes;
}

std::int64_t numberAt(std::string_view text) {
    std::int64_t number = -1;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// One call that succeeded, in the form of `strace -xx -y`:
// openat(AT_FDCWD</x>, "\x61", O_WRONLY|O_CREAT, 0600) = 3</x/a>
struct RecordedCall {
    std::string name;
    std::vector<std::string> texts;  // the quoted ones, and the files of descriptors, as they come
    std::string rest;                // all else, without them
    std::int64_t result = -1;

    bool has(std::string_view word) const { return rest.find(word) != rest.npos; }
    std::int64_t lastArgument() const {
        return numberAt(std::string_view{rest}.substr(rest.rfind(", ", rest.rfind(')')) + 2));
    }
    // Where a call names a file by a path, the directory that the path is relative to comes before.
    const std::string& path(std::size_t fromTheEnd) const {
        static const std::string none;
        return fromTheEnd < texts.size() ? texts[texts.size() - 1 - fromTheEnd] : none;
    }
};

std::optional<RecordedCall> parseCall(std::string_view line) {
    const std::size_t open = line.find('(');
    const std::size_t equals = line.rfind(" = ");
    if (open == line.npos || equals == line.npos || equals < open) return std::nullopt;
    RecordedCall call{std::string{line.substr(0, open)}, {}, {}, numberAt(line.substr(equals + 3))};
    if (call.result < 0) return std::nullopt;
    line.remove_prefix(open);
    while (!line.empty()) {
        const char mark = line[0];
        const std::size_t end =
            mark == '"' || mark == '<' ? line.find(mark == '"' ? '"' : '>', 1) : line.npos;
        if (end == line.npos) {
            call.rest += mark;
            line.remove_prefix(1);
            continue;
        }
        call.texts.push_back(decoded(line.substr(1, end - 1)));
        line.remove_prefix(end + 1);
    }
    return call;
}

class Recorder {
 public:
    Recorder(std::filesystem::path directory, DiskModel& disk)
        : prefix_{directory.string() + "/"}, disk_{disk} {}

    void record(std::string_view trace) {
        while (!trace.empty()) {
            const std::string_view line = trace.substr(0, trace.find('\n'));
            trace.remove_prefix(std::min(line.size() + 1, trace.size()));
            recordLine(line);
        }
    }

 private:
    // "4242  write(1</x>, "\x78", 1 <unfinished ...>", and later "4242  <... write resumed>) = 1".
    void recordLine(std::string_view line) {
        constexpr std::string_view unfinished = " <unfinished ...>";
        constexpr std::string_view resumed = " resumed>";
        const std::size_t start = line.find_first_not_of(' ', line.find(' '));
        if (start == line.npos) return;
        std::string& begun = begun_[numberAt(line)];
        line.remove_prefix(start);
        if (line.ends_with(unfinished)) {
            begun = line.substr(0, line.size() - unfinished.size());
            return;
        }
        std::string whole;
        if (line.starts_with("<... ")) {
            line.remove_prefix(line.find(resumed) + resumed.size());
            whole = std::exchange(begun, {}).append(line);
            line = whole;
        }
        if (const auto call = parseCall(line)) apply(*call);
    }

    // Absent for what lies elsewhere, and what the model leaves out.
    std::optional<std::string> placeOf(const std::string& path) const {
        if (path + "/" == prefix_) return "";
        if (!path.starts_with(prefix_) || DiskTree::leavesOut(path)) return std::nullopt;
        return path.substr(prefix_.size());
    }

    void apply(const RecordedCall& call) {
        // What has lost its name cannot be found after a power cut, unless that is lost as well;
        // nobody writes behind it.
        if (call.has("(deleted)")) return;
        const bool isWrite = call.name == "write" || call.name == "pwrite64";
        if (isWrite && call.rest.starts_with("(1,") && !placeOf(call.path(1)))
            disk_.print(call.path(0));
        const auto place = placeOf(isWrite ? call.path(1) : call.path(0));
        if (!place) return;
        EXPECT_TRUE(isFollowed(call, *place, isWrite)) << call.name << call.rest << " " << *place;
    }

    bool isFollowed(const RecordedCall& call, const std::string& place, bool isWrite) {
        const auto& name = call.name;
        if (isWrite) {
            auto bytes = call.path(0).substr(0, static_cast<std::size_t>(call.result));
            if (name == "write") return disk_.append(place, std::move(bytes));
            return disk_.write(place, static_cast<std::size_t>(call.lastArgument()),
                               std::move(bytes));
        }
        if (name == "openat" || name == "open" || name == "creat") return isOpened(call, place);
        if (name.starts_with("mkdir")) return disk_.makeDirectory(place);
        if (name.starts_with("unlink") || name == "rmdir") return disk_.remove(place);
        if (name.starts_with("rename")) {
            // Between the two paths renameat2 has a second directory.
            const auto from = placeOf(call.path(name == "rename" ? 1 : 2));
            if (!from) return false;
            return call.has("RENAME_EXCHANGE") ? disk_.exchange(*from, place)
                                               : disk_.rename(*from, place);
        }
        if (name.ends_with("truncate"))
            return disk_.resize(place, static_cast<std::size_t>(call.lastArgument()));
        if (name.ends_with("sync")) return disk_.flush(place);
        return false;
    }

    bool isOpened(const RecordedCall& call, const std::string& place) {
        if (call.has("O_CREAT") && !disk_.has(place)) return disk_.create(place);
        return !call.has("O_TRUNC") || disk_.resize(place, 0);
    }

    std::string prefix_;
    DiskModel& disk_;
    std::map<std::int64_t, std::string> begun_;
};

}  // namespace

ProgramResult recordRun(const ProgramCall& call, const std::filesystem::path& directory,
                        DiskModel& disk) {
    const TemporaryDirectory temporary;
    const std::string file = temporary.path / "trace";
    ProgramCall outer = call;
    outer.program = Strace::program;
    outer.arguments = {"-f",        "-qq", "-xx", "-y", "-s",
                       "100000000", "-o",  file,  "-e", std::string{"trace="} + recordedCalls,
                       call.program};
    outer.arguments.insert(outer.arguments.end(), call.arguments.begin(), call.arguments.end());
    const ProgramResult result = run(outer);
    Recorder{directory, disk}.record(contentsOf(file));
    EXPECT_TRUE(disk.now() == DiskTree::of(directory)) << "the recording missed something";
    return result;
}

}  // namespace tallowbrook
