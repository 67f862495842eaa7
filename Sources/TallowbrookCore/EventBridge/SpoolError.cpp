#include "EventBridge/SpoolError.h"

namespace tallowbrook {

std::string SpoolError::diagnosticCode() const {
    struct Text {
        std::string operator()(const Io& error) const {
            return "io-" + error.step + "-errno" + std::to_string(error.errorNumber);
        }
        std::string operator()(const LineTooLarge& error) const {
            return "line-too-large(" + std::to_string(error.byteCount) + ")";
        }
        std::string operator()(const LockTimeout&) const { return "lock-timeout"; }
    };
    return std::visit(Text{}, reason);
}

}  // namespace tallowbrook
