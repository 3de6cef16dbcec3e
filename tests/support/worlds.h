#pragma once

#include <cstdlib>

#include "support/testserver.h"

namespace kolmera::test {

/// How many of its worlds a test makes: all, but on a database server, where each takes about a second, only `few`,
/// unless the environment asks for all (KOLMERA_ALL_WORLDS, as ./test --nightly does).
inline unsigned worlds(unsigned all, unsigned few) {
    return TestServer::named() && std::getenv("KOLMERA_ALL_WORLDS") == nullptr ? few : all;
}

}  // namespace kolmera::test
