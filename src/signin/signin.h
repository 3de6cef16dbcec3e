#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "platform/systemuser.h"
#include "signin/userfile.h"
#include "startup/startstate.h"

namespace kolmera {

/// 1 when some user is denied this program, else 0; only then is a sign-in needed.
std::int16_t FinnsAnvändare(std::span<const User> users);

/// The first user whose name is the system user's by one of these rules, or nullptr. The login name begins the user's
/// name; the full name does; or the login name up to its "@" is the beginning of the user's name with "." or "_" for
/// the blank (anna.berg), also when the name's å ä ö é are written a a o e. Letter case does not count.
const User* WindowsAnvändare(std::span<const User> users, const SystemUser& systemUser);

/// What became of a sign and a password typed into the sign-in form.
enum class SignInResult { SignedIn, UnknownSign, WrongPassword, NoRight };
SignInResult tryToSignIn(std::span<const User> users, std::string_view sign, std::string_view password);

/// Signs the user in where the user file asks for it: sets `FinnsAnvändare`, and `Signatur` unless `showForm` is left
/// to do it. A recognised system user who is denied this program is sent to the form. Throws PlatformError when the
/// user file cannot be read: nobody may use the program then.
void signIn(StartState& state, const SystemUser& systemUser,
            const std::function<void(std::span<const User> users)>& showForm);

}  // namespace kolmera
