#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "lang/languagetexts.h"
#include "startup/startstate.h"

namespace kolmera {

/// Finds the program's and the suite's folders: sets `ProgramMapp`, `DataMapp` and `EjKlientIni`. `programFolder` is
/// the folder of the program file. Without DVKlient.ini, or when the folder that it names cannot be entered, the
/// program works alone on the files in its own folder.
void LäsKlientIni(StartState& state, std::string programFolder);

/// Sets `StandardFöretag`, `TypsnittTahoma` and `InloggningsLäge` from DORVIK.INI of the data folder, which is created
/// empty when missing. A value that cannot be read leaves its member as it was.
void LäsDorvikIni(StartState& state);

/// Opens the language texts: those beside the program, else those of the suite's server folder (settings, "Sökvägar",
/// "Server"), which may be a share path.
void openTexts(const StartState& state, LanguageTexts& texts);

/// Signs the user in: sets `FinnsAnvändare` and `Signatur`. Given by the program; called behind LäsDorvikIni and never
/// when the program works alone.
using SignIn = std::function<void(StartState& state)>;

/// The start sequence up to the first window: folders, language, suite settings, sign-in, decimal sign. A step that
/// fails leaves its members as they were. The window system is prepared before, the main window shown behind it.
///
/// A program without windows passes no `signIn`: whoever may run it and read the data folder may import. Nobody is
/// signed in then, and `Signatur` stays as it was.
///
/// `dataFolder`, where it is given, stands in for the folder that DVKlient.ini names.
void startUp(StartState& state, LanguageTexts& texts, const std::string& programFolder, const SignIn& signIn = {},
             const std::filesystem::path& dataFolder = {});

}  // namespace kolmera
