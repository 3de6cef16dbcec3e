#include "platform/systemuser.h"

#include <pwd.h>
#include <unistd.h>

#include <string_view>
#include <vector>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

// An ampersand in the comment field stands for the login name with a capital.
std::string nameOf(std::string_view comment, std::string_view login) {
    return replaceAll(trimmed(comment.substr(0, comment.find(','))), "&", properCase(login));
}

}  // namespace

SystemUser SystemUser::current() {
    constexpr std::size_t kEntrySize = 16384;
    std::vector<char> buffer(kEntrySize);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return {};
    return {entry.pw_name, nameOf(entry.pw_gecos, entry.pw_name)};
}

}  // namespace kolmera
