// Plans to install the helper into a configuration file and applies the plan, to be watched by
// tests from outside: apply-plan CONFIG BACKUPS HELPER
//
// Ends with 0, or says why not and ends with 1 (2 when there was no plan). The application stands
// between two calls of alarm(2).
#include <unistd.h>

#include <cstdio>

#include "Integrations/IntegrationSetup.h"

int main(int argc, char** argv) {
    using namespace tallowbrook;
    if (argc != 4) return 2;
    const auto plan = IntegrationSetup::planInstall(Provider::claudeCode, argv[1], argv[3]);
    if (!plan) {
        std::fputs(plan.error().description().c_str(), stderr);
        return 2;
    }
    const Instant now = currentInstant();
    alarm(60);
    const auto applied = ConfigFileWriter::apply(*plan, argv[2], now);
    alarm(0);
    if (applied) return 0;
    std::fputs(applied.error().description().c_str(), stderr);
    return 1;
}
