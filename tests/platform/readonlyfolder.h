#pragma once

#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <utility>

namespace kolmera::test {

/// A folder that can be read but not written while this object lives, also when the administrator runs the tests.
class ReadOnlyFolder {
  public:
    explicit ReadOnlyFolder(std::filesystem::path folder) : folder_(std::move(folder)), user_(geteuid()) {
        permit(0555);
        if (user_ == 0 && seteuid(kNobody) != 0) throw std::runtime_error("cannot become an ordinary user");
    }
    ~ReadOnlyFolder() {
        if (seteuid(user_) == 0) permit(0755);
    }
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
    void permit(unsigned mode) const {
        std::filesystem::permissions(folder_, static_cast<std::filesystem::perms>(mode));
    }

    std::filesystem::path folder_;
    uid_t user_;
};

}  // namespace kolmera::test
