#pragma once

#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <utility>

namespace kolmera::test {

/// A file or folder with fewer rights while this object lives. They hold also when the administrator runs the tests.
class RestrictedPath {
  public:
    RestrictedPath(std::filesystem::path path, unsigned mode) : path_(std::move(path)), user_(geteuid()) {
        permit(mode);
        if (user_ == 0 && seteuid(kNobody) != 0) throw std::runtime_error("cannot become an ordinary user");
    }
    ~RestrictedPath() {
        if (seteuid(user_) == 0) permit(0755);
    }
    RestrictedPath(const RestrictedPath&) = delete;
    RestrictedPath& operator=(const RestrictedPath&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
    void permit(unsigned mode) const { std::filesystem::permissions(path_, static_cast<std::filesystem::perms>(mode)); }

    std::filesystem::path path_;
    uid_t user_;
};

}  // namespace kolmera::test
