#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "db/sqllayer.h"
#include "platform/locale.h"
#include "platform/paths.h"
#include "platform/settings.h"

namespace kolmera {

/// What start-up finds and the whole program reads: one object per process, made in `main` and handed on by reference.
/// Below its owners a routine takes the members that it uses, not the whole. Folder texts keep the suite's spelling and
/// end in a separator; `dataFolder()` is the same as a path of this system.
struct StartState {
    StartState(SettingsStore settingsStore, const Locale& userLocale)
        : settings(std::move(settingsStore)),
          locale(userLocale),
          drives(DriveMap::fromSettings(settings)),
          sql(locale) {}

    SettingsStore settings;
    Locale locale;
    DriveMap drives;
    SqlLayer sql;  ///< holds FtgDB and ÄrSQLFöretag

    std::string ProgramMapp;
    std::string DataMapp;
    bool EjKlientIni = false;
    std::string StandardFöretag;
    bool TypsnittTahoma = false;
    std::int16_t InloggningsLäge = 0;
    std::int16_t FinnsAnvändare = 0;
    std::string Signatur;
    std::string Språkkod = "SE";
    char Decimaltecken = ',';
    char Citattecken = '"';
    std::int16_t Svar = 0;
    bool SvarOK = false;
    std::string helpFile;  ///< ProgramMapp + "Dorvik.chm"

    [[nodiscard]] std::filesystem::path programFolder() const { return drives.resolve(ProgramMapp, {}); }
    [[nodiscard]] std::filesystem::path dataFolder() const { return drives.resolve(DataMapp, {}); }
};

}  // namespace kolmera
