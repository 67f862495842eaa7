#include "Terminal/ProcessTable.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

#include "Text/Digits.h"

namespace tallowbrook {
namespace {

std::string_view takeField(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view field = text.substr(0, text.find_first_of(" \n"));
    text.remove_prefix(field.size());
    return field;
}

// Reads the front of "PID (NAME) STATE PARENT GROUP SESSION TERMINAL …". The name stands as it
// is, whatever blanks, parentheses and line feeds it holds; the fields behind it hold none.
std::optional<ProcessRecord> parseStatus(pid_t pid, std::string_view line) {
    const std::size_t open = line.find('(');
    const std::size_t close = line.rfind(')');
    if (open == line.npos || close == line.npos || close < open) return std::nullopt;

    std::string_view rest = line.substr(close + 1);
    std::array<std::string_view, 5> fields;
    for (auto& field : fields) field = takeField(rest);
    const auto parent = parseNumber<std::int32_t>(fields[1]);
    const auto device = parseNumber<std::int32_t>(fields[4]);
    if (!parent || !device) return std::nullopt;

    ProcessRecord record{.pid = pid, .parentPID = *parent, .device = {}, .name = {}};
    // The number is printed signed, so the highest pseudo-terminals appear negative.
    if (*device != 0) record.device = static_cast<std::uint32_t>(*device);
    record.name = ProcessTable::decodeCommandName(line.substr(open + 1, close - open - 1));
    return record;
}

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

// Terminals of other drivers: the last part of .../tty/ttyAMA0.
std::optional<std::string> nameInDeviceTree(unsigned majorNumber, unsigned minorNumber) {
    const std::string link =
        "/sys/dev/char/" + std::to_string(majorNumber) + ':' + std::to_string(minorNumber);
    std::array<char, 512> target{};
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    if (length <= 0 || static_cast<std::size_t>(length) == target.size()) return std::nullopt;
    const std::string_view path{target.data(), static_cast<std::size_t>(length)};
    return std::string{path.substr(path.rfind('/') + 1)};
}

}  // namespace

std::optional<ProcessRecord> ProcessTable::process(pid_t pid) {
    const std::string path = "/proc/" + std::to_string(pid) + "/stat";
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return std::nullopt;
    // The longest name the kernel writes and the fields up to the terminal fit with room to spare.
    std::array<char, 512> line;
    const ssize_t length = read(file, line.data(), line.size());
    close(file);
    if (length <= 0) return std::nullopt;
    return parseStatus(pid, {line.data(), static_cast<std::size_t>(length)});
}

std::vector<ProcessRecord> ProcessTable::processesOnDevice(dev_t device) {
    const std::unique_ptr<DIR, CloseDirectory> directory{opendir("/proc")};
    if (!directory) return {};
    std::vector<ProcessRecord> found;
    while (const dirent* entry = readdir(directory.get())) {
        const auto pid = parseNumber<std::int32_t>(entry->d_name);
        if (!pid) continue;  // not a process
        auto record = process(*pid);
        if (record && record->device == device) found.push_back(std::move(*record));
    }
    return found;
}

std::optional<std::string> ProcessTable::deviceName(dev_t device) {
    // The numbers that the kernel has assigned to its terminal drivers.
    constexpr unsigned consoleMajor = 4;
    constexpr unsigned firstSerialMinor = 64;
    constexpr unsigned firstPseudoMajor = 136;
    constexpr unsigned lastPseudoMajor = 143;
    constexpr unsigned minorsPerPseudoMajor = 256;

    const unsigned majorNumber = major(device);
    const unsigned minorNumber = minor(device);
    if (majorNumber >= firstPseudoMajor && majorNumber <= lastPseudoMajor) {
        const unsigned before = (majorNumber - firstPseudoMajor) * minorsPerPseudoMajor;
        return "pts/" + std::to_string(before + minorNumber);
    }
    if (majorNumber == consoleMajor) {
        if (minorNumber < firstSerialMinor) return "tty" + std::to_string(minorNumber);
        return "ttyS" + std::to_string(minorNumber - firstSerialMinor);
    }
    return nameInDeviceTree(majorNumber, minorNumber);
}

}  // namespace tallowbrook
