#include "platform/privatename.h"

#include <fmt/format.h>
#include <sys/random.h>

#include <cerrno>
#include <cstdint>

#include "platform/descriptor.h"

namespace kolmera {

std::string privateDigits() {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) throwSystemError(errno);
    return fmt::format("{:016x}", number);
}

}  // namespace kolmera
