#include "Commands/HostRow.h"

#include <fmt/core.h>

#include "Domain/RecordCoding.h"
#include "Output/TimeText.h"

namespace tallowbrook::host {

std::string hostRow(const std::optional<HostHolder>& host, Instant now) {
    if (!host) return "Host: not running, nobody is told anything; run \"tallowbrook watch\"\n";
    return fmt::format("Host: running{}{}\n",
                       host->since ? " since " + TimeText::shortTime(*host->since, now) : "",
                       host->pid ? fmt::format(" (process {})", *host->pid) : "");
}

std::string hostJSON(const std::optional<HostHolder>& host) {
    RecordEncoder encoder;
    encoder.encode("running", host.has_value());
    if (host) {
        encoder.encode("pid", host->pid);
        encoder.encode("since", host->since);
    }
    return encoder.text();
}

}  // namespace tallowbrook::host
