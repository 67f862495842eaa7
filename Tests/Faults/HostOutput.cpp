#include "HostOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <boost/json/parse.hpp>

#include "Support/FileContents.h"

namespace tallowbrook {

std::multiset<std::string> toldIn(const std::string& output) {
    static const std::string before = "  Claude Code finished: ";
    static const std::string after = " — turn completed.\n";
    std::multiset<std::string> sessions;
    std::size_t start = 0;
    while ((start = output.find(before, start)) != std::string::npos) {
        start += before.size();
        const std::size_t end = output.find(after, start);
        if (end == std::string::npos) break;
        sessions.insert(output.substr(start, end - start));
    }
    return sessions;
}

std::multiset<std::string> sessionsListed(const std::string& output) {
    std::multiset<std::string> sessions;
    boost::system::error_code error;
    const auto list = boost::json::parse(output, error);
    if (error || !list.is_array()) {
        ADD_FAILURE() << "no JSON array: " << output.substr(0, 200);
        return sessions;
    }
    for (const auto& session : list.get_array()) {
        const std::string id{session.at("id").as_string()};
        sessions.insert(id.substr(id.find('|') + 1));
    }
    return sessions;
}

HostOutput::HostOutput(std::filesystem::path file) : file_{std::move(file)} {
    if (!exists(file_)) writeContents(file_, "");
}

ProgramCall HostOutput::takenFrom(ProgramCall call) const {
    call.prepare = [prepare = std::move(call.prepare), file = file_] {
        dup2(open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC), STDOUT_FILENO);
        prepare();
    };
    return call;
}

std::string HostOutput::text() const { return contentsOf(file_); }

}  // namespace tallowbrook
