#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lang/languagetexts.h"
#include "startup/messageboxes.h"
#include "startup/startstate.h"

namespace kolmera {

/// Opens company databases and keeps the register of companies (DORVIK.FTG).
class CompanyRegister {
  public:
    CompanyRegister(StartState& state, LanguageTexts& texts, MessageBoxes& boxes)
        : state_(state), texts_(texts), boxes_(boxes) {}

    /// Opens the company's database as `state.sql.FtgDB`. A failure is shown in a message box and returns false; a
    /// company that was open then stays open, unless a server has been tried.
    bool ÖppnaDatabas(std::string_view name);
    /// Opens a private copy of the company, of a server company too, as `state.sql.FtgDB`; `copy` is a new file's name.
    /// A failure is shown and returns false, as does `goOn`, which is asked again and again. The tables `leftOut` of a
    /// server company are not fetched, and are empty.
    bool ÖppnaKopia(std::string_view name, const std::filesystem::path& copy, std::span<const std::string_view> leftOut,
                    const std::function<bool()>& goOn);
    /// Asked again and again while another session holds a lock; returns false to give up. Set by runs.
    std::function<bool()> waitForLock;
    /// Asked again and again while a server does not answer, with the time that it has been waited for; returns false
    /// to give up. Set by runs; without it the messages' port is asked.
    std::function<bool(std::chrono::milliseconds waited)> waitForAnswer;
    /// Asks whether a damaged company shall be repaired, and repairs it. Nobody may have it open here. Returns whether
    /// it has been repaired. Where nobody answers, it says how to repair it.
    bool offerRepair(const std::string& file);
    /// Repairs a company file. Throws PlatformError.
    RepairReport repair(const std::string& file);
    /// Whether a company file is what it should be in all its parts. Throws PlatformError.
    bool isSound(const std::string& file);

    /// The password of a company file from DVDefLog.bin, or empty.
    std::string LösenFör(std::string_view name);
    /// Rows "company name TAB database file" of all company files in the data folder, by file name; new ones join the
    /// register. A file that cannot be opened is shown in a message box and left out.
    std::vector<std::string> FyllFöretagsLista();

  private:
    std::unique_ptr<Database> openFile(std::string_view name, bool readOnly);
    [[nodiscard]] OpenOptions openOptions(std::string_view name);
    bool openServer(std::string_view name);
    std::unique_ptr<Database> copyOfServer(const std::filesystem::path& copy, std::span<const std::string_view> leftOut,
                                           const std::function<bool()>& goOn);
    std::optional<std::string> registeredName(const std::string& file);
    std::optional<std::string> newCompany(const std::string& file);
    bool openRepaired(std::string_view name);
    void warnNotOpened(std::string_view name, const PlatformError& error);
    std::optional<std::string> repairedCompany(const std::string& file);
    std::string companyName(const std::string& file);
    void showFailure(const std::string& file, const PlatformError& error);

    StartState& state_;
    LanguageTexts& texts_;
    MessageBoxes& boxes_;
};

}  // namespace kolmera
