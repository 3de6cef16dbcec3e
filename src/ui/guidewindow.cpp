#include "ui/guidewindow.h"

#include <QDialog>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "lang/keys/boxes.h"
#include "platform/error.h"
#include "platform/tsv.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

void layOut(QDialog& window, const std::string& guide) {
    constexpr int kLetters = 110, kLines = 40;
    window.setObjectName(QStringLiteral("Handbok"));
    window.setAttribute(Qt::WA_DeleteOnClose);
    auto* text = new QTextBrowser(&window);
    text->setObjectName(QStringLiteral("Text"));
    text->setAccessibleName(window.windowTitle());
    text->setOpenExternalLinks(true);
    text->setMarkdown(toQt(guide));
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(text);
    const QFontMetrics metrics = window.fontMetrics();
    window.resize(kLetters * metrics.averageCharWidth(), kLines * metrics.lineSpacing());
}

}  // namespace

std::filesystem::path guideFile(const std::filesystem::path& programFolder, std::string_view language) {
    const auto swedish = programFolder / "guide.sv.md", english = programFolder / "guide.en.md";
    const bool wantsEnglish = language == "EN";
    std::error_code unreadable;
    for (const auto& file : {wantsEnglish ? english : swedish, wantsEnglish ? swedish : english}) {
        if (std::filesystem::is_regular_file(file, unreadable)) return file;
    }
    return {};
}

bool openGuide(QWidget* parent, LanguageTexts& texts, const std::filesystem::path& programFolder) {
    const auto file = guideFile(programFolder, texts.language());
    if (file.empty()) return false;
    try {
        const std::string guide = readWholeFile(file);
        auto* window = new QDialog(parent);
        window->setWindowTitle(toQt(texts.ModulText(text::boxes::kGuide)));
        layOut(*window, guide);
        window->show();
        return true;
    } catch (const PlatformError&) {
        return false;
    }
}

}  // namespace kolmera
