#include "cli/companychoice.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <ostream>

#include "lang/keys/company.h"
#include "lang/keys/letter.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "startup/companylist.h"

namespace kolmera::cli {

std::optional<std::string> chosenCompany(Session& session, CompanyRegister& companies, const std::string& named,
                                         std::ostream& err) {
    const std::vector<Company> list = companyList(companies, session.state.dataFolder());
    const std::string_view wanted = named.empty() ? session.state.StandardFöretag : named;
    if (auto database = databaseNamed(list, wanted)) return database;
    if (named.empty() && list.size() == 1) return list.front().database;
    std::vector<std::string> databases;
    std::ranges::transform(list, std::back_inserter(databases), &Company::database);
    const std::string message =
        !named.empty() ? session.text(text::company::kNoSuchCompany, named)
        : list.empty() ? session.text(text::terminal::kNotADataFolder, session.state.dataFolder().string())
                       : session.text(text::letter::kNameACompany, fmt::format("{}", fmt::join(databases, ", ")));
    err << session.text(text::terminal::kError) << ' ' << replaceAll(message, "\r\n", "\n") << '\n';
    return std::nullopt;
}

}  // namespace kolmera::cli
