#include "cli/session.h"

#include <fmt/format.h>

#include <filesystem>
#include <ostream>
#include <system_error>

#include "cli/builtintexts.h"
#include "lang/errortext.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"
#include "startup/startup.h"

namespace kolmera::cli {

std::filesystem::path absoluteFolder(const std::string& folder) {
    return std::filesystem::absolute(folder).lexically_normal();
}

Session::Session(const Surroundings& surroundings, const std::string& dataFolder)
    : state(SettingsStore(surroundings.settingsFile), surroundings.locale), verbose(surroundings.verbose) {
    state.ProgramMapp = (surroundings.programFolder / "").string();
    state.DataMapp = dataFolder.empty() ? state.ProgramMapp : (absoluteFolder(dataFolder) / "").string();
    state.EjKlientIni = dataFolder.empty();
    state.Decimaltecken = state.locale.decimalSign();
    state.Signatur = "DV";

    texts.fallBackOn(builtInTexts());
    openTexts(state, texts);
    state.Språkkod = LanguageTexts::NormaliseraSpråk(state.settings.get("Start", "Lang", "SE"));
    texts.InitSpråkOrd(state.Språkkod);
}

std::string Session::explain(const PlatformError& error) {
    const std::string told = errorText(texts, error);
    return verbose ? fmt::format("{} [{}]", told, originalText(error)) : told;
}

bool Session::hasDataFolder(std::ostream& err) {
    const std::filesystem::path folder = state.dataFolder();
    std::error_code unreachable;
    if (std::filesystem::is_directory(folder, unreachable)) return true;
    err << text(text::terminal::kError) << ' ' << text(text::terminal::kNoDataFolder, folder.string()) << '\n';
    return false;
}

bool Session::cutAtSemicolon(std::string_view company, std::ostream& err) {
    if (!equalNoCase(trimmed(company), "SQL")) return false;
    err << text(text::terminal::kError) << ' ' << text(text::terminal::kCutAtSemicolon) << '\n';
    return true;
}

}  // namespace kolmera::cli
