#include "QuietExit.h"

#include <cxxabi.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

namespace tallowbrook::hook {
namespace {

// _exit(2), since a signal may come in the middle of anything and run no destructors.
extern "C" void exitQuietly(int) { _exit(0); }

}  // namespace

void armWatchdog(unsigned seconds) {
    struct sigaction action{};
    action.sa_handler = exitQuietly;
    sigaction(SIGALRM, &action, nullptr);
    // An agent may have blocked the signal; the mask is inherited.
    sigset_t alarmOnly;
    sigemptyset(&alarmOnly);
    sigaddset(&alarmOnly, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarmOnly, nullptr);
    alarm(seconds);
}

void ignoreDeadlySignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate([] { _exit(0); });
}

std::string currentExceptionTypeName() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    if (type == nullptr) return "unknown";
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> demangled{
        abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free};
    const std::string name = demangled ? demangled.get() : type->name();
    const std::size_t scope = name.rfind("::");
    return scope == std::string::npos ? name : name.substr(scope + 2);
}

}  // namespace tallowbrook::hook
