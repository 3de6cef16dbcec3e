#include "platform/engine/database.h"
#include "platform/error.h"

namespace kolmera {

RepairReport repairFileDatabase(const std::filesystem::path& file, const OpenOptions& /*options*/) {
    throw PlatformError(errors::kDamaged, "the file cannot be repaired yet: " + file.string());
}

}  // namespace kolmera
