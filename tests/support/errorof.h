#pragma once

#include "platform/error.h"

namespace kolmera::test {

/// The error number of what a statement throws, 0 when it throws nothing. -number when the error ends the run.
template <typename Statement>
int errorOf(Statement&& statement) {
    try {
        statement();
        return 0;
    } catch (const PlatformError& error) {
        return error.endsRun() ? -error.number() : error.number();
    }
}

}  // namespace kolmera::test
