#include "signin/signin.h"

#include <algorithm>
#include <vector>

#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

// Values of InloggningsLäge; any other value asks in the form.
constexpr std::int16_t kNoSignIn = 6610;
constexpr std::int16_t kBySystemUser = 6611;

std::string withoutAccents(std::string_view upper) {
    std::string text(upper);
    constexpr std::pair<std::string_view, std::string_view> kLetters[] = {
        {"Å", "A"}, {"Ä", "A"}, {"Ö", "O"}, {"É", "E"}};
    for (const auto& [letter, plain] : kLetters) text = replaceAll(text, letter, plain);
    return text;
}

/// Upper-cased names of the system user.
struct Names {
    std::string login, full, withBlankForPoint, withBlankForUnderscore;
};

Names namesOf(const SystemUser& user) {
    Names names{.login = upperCase(trimmed(user.login)),
                .full = upperCase(trimmed(user.fullName)),
                .withBlankForPoint = {},
                .withBlankForUnderscore = {}};
    const std::string_view name = std::string_view(names.login).substr(0, names.login.find('@'));
    names.withBlankForPoint = replaceAll(name, ".", " ");
    names.withBlankForUnderscore = replaceAll(name, "_", " ");
    return names;
}

bool matches(const Names& names, std::string_view userName) {
    const std::string recName = upperCase(trimmed(userName));
    if (!names.full.empty() && recName.starts_with(names.full)) return true;
    if (names.login.empty() || recName.empty()) return false;
    const std::string_view head = firstCharacters(recName, characterCount(names.login));
    const auto written = [&names](std::string_view text) {
        return text == names.withBlankForPoint || text == names.withBlankForUnderscore;
    };
    return head == names.login || written(head) || written(withoutAccents(head));
}

}  // namespace

std::int16_t FinnsAnvändare(std::span<const User> users) {
    return std::any_of(users.begin(), users.end(), [](const User& user) { return user.denied; }) ? 1 : 0;
}

const User* WindowsAnvändare(std::span<const User> users, const SystemUser& systemUser) {
    const Names names = namesOf(systemUser);
    const auto found =
        std::find_if(users.begin(), users.end(), [&](const User& user) { return matches(names, user.name); });
    return found == users.end() ? nullptr : &*found;
}

SignInResult tryToSignIn(std::span<const User> users, std::string_view sign, std::string_view password) {
    const std::string typed = upperCase(trimmed(sign));
    // Records without a sign are nobody's.
    if (typed.empty()) return SignInResult::UnknownSign;
    const auto user = std::find_if(users.begin(), users.end(), [&typed](const User& candidate) {
        return !candidate.takesNoPart && upperCase(candidate.sign) == typed;
    });
    if (user == users.end()) return SignInResult::UnknownSign;
    if (user->password != upperCase(password)) return SignInResult::WrongPassword;
    return user->denied ? SignInResult::NoRight : SignInResult::SignedIn;
}

void signIn(StartState& state, const SystemUser& systemUser,
            const std::function<void(std::span<const User> users)>& showForm) {
    const std::vector<User> users = readUsers(state.dataFolder());
    state.FinnsAnvändare = FinnsAnvändare(users);
    if (state.FinnsAnvändare == 0) return;
    if (state.InloggningsLäge == kNoSignIn) {
        state.Signatur = "DV";
        return;
    }
    const User* known = state.InloggningsLäge == kBySystemUser ? WindowsAnvändare(users, systemUser) : nullptr;
    if (known != nullptr && !known->denied && !known->takesNoPart && !known->sign.empty()) {
        state.Signatur = known->sign;
        return;
    }
    showForm(users);
}

}  // namespace kolmera
