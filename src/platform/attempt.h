#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/error.h"

namespace kolmera {

/// Hears of every statement that "continue on error" passed over. The desktop program does not listen; the
/// terminal counts and lists.
class PassedOver {
  public:
    virtual ~PassedOver() = default;
    virtual void note(std::string_view what, const PlatformError& error) = 0;
};

/// Listens to nothing.
class PassedOverSilently final : public PassedOver {
  public:
    void note(std::string_view /*what*/, const PlatformError& /*error*/) override {}
};

/// Searches for a row and adds it when it is not there: once more when somebody else has added it between the two.
template <typename Statement>
void searchAgainOnDuplicate(Statement&& statement) {
    try {
        statement();
    } catch (const PlatformError& error) {
        if (error.number() != errors::kDuplicateKey || error.endsRun()) throw;
        statement();
    }
}

/// Runs one statement in continue-on-error mode: a PlatformError is noted and passed over, unless it ends the run.
/// Anything else (a fault of ours) travels on. Work the value out first and assign last, so that a failure leaves
/// everything as it was. Returns whether the statement succeeded.
template <typename Statement>
bool attempt(PassedOver& passedOver, std::string_view what, Statement&& statement) {
    try {
        std::forward<Statement>(statement)();
        return true;
    } catch (const PlatformError& error) {
        if (error.endsRun()) throw;
        passedOver.note(what, error);
        return false;
    }
}

}  // namespace kolmera
