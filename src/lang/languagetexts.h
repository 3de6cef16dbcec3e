#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "lang/originalwords.h"
#include "lang/textkeys.h"
#include "platform/engine/database.h"
#include "platform/settings.h"

namespace kolmera {

/// Visible texts by key from the language database DVLang.sys (table "Lang", index "LangKey"), in Swedish or English.
/// A missing file, key or column gives empty texts, never an error.
class LanguageTexts {
  public:
    /// Opens DVLang.sys in the program folder, else in the server folder of the user's settings.
    void ÖppnaSpråk(const std::filesystem::path& programFolder, const std::filesystem::path& serverFolder);
    /// "EN" stays, everything else becomes "SE".
    static std::string NormaliseraSpråk(std::string_view code);
    void InitSpråkOrd(std::string_view languageCode);
    void StängSpråk();
    /// Lines "key TAB SE TAB EN TAB name" for what DVLang.sys does not have; they must outlive the object.
    void fallBackOn(std::span<const std::string_view> lines) { fallback_ = lines; }

    [[nodiscard]] const std::string& language() const { return language_; }
    /// Of the errors that were told in these texts (`errorText`).
    [[nodiscard]] OriginalWords& originalWords() { return originalWords_; }
    [[nodiscard]] std::string SpråkText(std::string_view key);
    /// The stored text without decoding of markers, as form translation places it; nothing when the key is missing.
    [[nodiscard]] std::optional<std::string> storedText(std::string_view key);
    [[nodiscard]] std::string ResText(MessageKey key) { return ResText(key.number); }
    [[nodiscard]] std::string FormulärText(std::string_view form);  ///< a form's caption; `suite/captions` asks for it
    [[nodiscard]] std::string FormulärSträng(FormKey key) { return FormulärSträng(key.form, key.number); }
    [[nodiscard]] std::string FormulärSträngMed1(FormKey key, std::string_view var1) {
        return FormulärSträngMed1(key.form, key.number, var1);
    }
    [[nodiscard]] std::string FormulärSträngMed2(FormKey key, std::string_view var1, std::string_view var2) {
        return FormulärSträngMed2(key.form, key.number, var1, var2);
    }
    [[nodiscard]] std::string FormulärSträngMed3(FormKey key, std::string_view var1, std::string_view var2,
                                                 std::string_view var3) {
        return FormulärSträngMed3(key.form, key.number, var1, var2, var3);
    }
    [[nodiscard]] std::string ModulText(ModuleKey key) { return ModulText(key.module, key.number); }
    [[nodiscard]] std::string ModulTextMed(ModuleKey key, std::string_view var1) {
        return ModulTextMed(key.module, key.number, var1);
    }
    [[nodiscard]] std::string RegisterText(std::string_view registerName, int number);
    [[nodiscard]] static std::string AvkodaPlatshållare(std::string_view text);

  protected:
    // By number: nobody else knows whether there is such a text.
    [[nodiscard]] std::string ResText(int number);
    [[nodiscard]] static std::string FormulärSträngNyckel(std::string_view form, int number);
    [[nodiscard]] std::string FormulärSträng(std::string_view form, int number);
    [[nodiscard]] std::string FormulärSträngMed1(std::string_view form, int number, std::string_view var1);
    [[nodiscard]] std::string FormulärSträngMed2(std::string_view form, int number, std::string_view var1,
                                                 std::string_view var2);
    [[nodiscard]] std::string FormulärSträngMed3(std::string_view form, int number, std::string_view var1,
                                                 std::string_view var2, std::string_view var3);
    [[nodiscard]] std::string ModulText(std::string_view module, int number);
    [[nodiscard]] std::string ModulTextMed(std::string_view module, int number, std::string_view var1);

  private:
    std::string language_ = "SE";
    std::unique_ptr<Database> database_;
    std::unique_ptr<Recordset> lang_;
    std::span<const std::string_view> fallback_;
    OriginalWords originalWords_;
};

/// Writes DVLang.sys from a table of texts (key TAB SE TAB EN, then what it does not need; header line, "#" comments).
/// Throws PlatformError.
void buildLanguageDatabase(const std::filesystem::path& tsv, const std::filesystem::path& target);

}  // namespace kolmera
