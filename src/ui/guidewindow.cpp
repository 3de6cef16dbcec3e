#include "ui/guidewindow.h"

#include <fmt/format.h>

#include <QAbstractTextDocumentLayout>
#include <QDesktopServices>
#include <QDialog>
#include <QImage>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "lang/keys/boxes.h"
#include "platform/error.h"
#include "platform/tsv.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr const char* kWindow = "Handbok";

/// A text whose pictures are no wider than `width`.
class GuideText final : public QTextBrowser {
  public:
    GuideText(QWidget* parent, int width) : QTextBrowser(parent), width_(width) {}

    QVariant loadResource(int type, const QUrl& name) override {
        QVariant resource = QTextBrowser::loadResource(type, name);
        if (type != QTextDocument::ImageResource) return resource;
        const QImage picture = QImage::fromData(resource.toByteArray());
        return picture.width() > width_ ? picture.scaledToWidth(width_, Qt::SmoothTransformation) : resource;
    }

  private:
    int width_;
};

/// What a link within the guide calls a heading: its letters in lower case, with "-" for blanks.
QString anchorOf(const QString& heading) {
    QString anchor;
    for (const QChar letter : heading.toLower()) {
        if (letter.isLetterOrNumber()) anchor += letter;
        if (letter == ' ' || letter == '-') anchor += '-';
    }
    return anchor;
}

/// Puts the heading with this number, from 1, at the top.
void scrollTo(QTextBrowser& text, int heading) {
    int number = 0;
    for (QTextBlock block = text.document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 || ++number != heading) continue;
        text.setTextCursor(QTextCursor(block));
        const double top = text.document()->documentLayout()->blockBoundingRect(block).top();
        text.verticalScrollBar()->setValue(static_cast<int>(top));
        return;
    }
}

/// The number of the first heading that is called so; 0: none.
int headingOf(const QTextBrowser& text, const QString& anchor) {
    int number = 0;
    for (QTextBlock block = text.document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0) continue;
        ++number;
        if (anchorOf(block.text()) == anchor) return number;
    }
    return 0;
}

/// The guide's text in its window, new or there already.
QTextBrowser* textIn(QDialog& window) {
    constexpr int kLetters = 110, kLines = 40;
    if (auto* text = window.findChild<QTextBrowser*>()) return text;
    window.setObjectName(QString::fromUtf8(kWindow));
    window.setAttribute(Qt::WA_DeleteOnClose);
    const QFontMetrics metrics = window.fontMetrics();
    const int width = kLetters * metrics.averageCharWidth();
    auto* text = new GuideText(&window, width - window.style()->pixelMetric(QStyle::PM_ScrollBarExtent) * 4);
    text->setObjectName(QStringLiteral("Text"));
    text->setAccessibleName(window.windowTitle());
    text->setOpenLinks(false);
    QObject::connect(text, &QTextBrowser::anchorClicked, text, [text](const QUrl& link) {
        if (!link.scheme().isEmpty()) {
            QDesktopServices::openUrl(link);
        } else if (const int heading = headingOf(*text, link.fragment()); heading > 0) {
            scrollTo(*text, heading);
        }
    });
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(text);
    window.resize(width, kLines * metrics.lineSpacing());
    return text;
}

/// The line of a mark, "<!-- PrisMTyp, MaskSample -->", names `topic`.
bool names(std::string_view line, std::string_view topic) {
    constexpr std::string_view kBegin = "<!-- ", kEnd = " -->";
    if (topic.empty() || !line.starts_with(kBegin) || !line.ends_with(kEnd)) return false;
    const std::string marks =
        fmt::format(", {},", line.substr(kBegin.size(), line.size() - kBegin.size() - kEnd.size()));
    return marks.find(fmt::format(", {},", topic)) != std::string::npos;
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

int guideHeading(std::string_view guide, std::string_view topic) {
    int headings = 0;
    bool marked = false;
    while (!guide.empty()) {
        const std::string_view line = guide.substr(0, guide.find('\n'));
        guide.remove_prefix(std::min(line.size() + 1, guide.size()));
        marked = marked || names(line, topic);
        if (!line.starts_with('#')) continue;
        ++headings;
        if (marked) return headings;
    }
    return 0;
}

bool openGuide(QWidget* parent, LanguageTexts& texts, const std::filesystem::path& programFolder,
               std::string_view topic) {
    const auto file = guideFile(programFolder, texts.language());
    if (file.empty()) return false;
    try {
        const std::string guide = readWholeFile(file);
        auto* window = parent->findChild<QDialog*>(QString::fromUtf8(kWindow), Qt::FindDirectChildrenOnly);
        if (window == nullptr) window = new QDialog(parent);
        window->setWindowTitle(toQt(texts.ModulText(text::boxes::kGuide)));
        QTextBrowser* const text = textIn(*window);
        // An installed guide is a link to where its pictures are, too.
        text->setSearchPaths({toQt(std::filesystem::canonical(file).parent_path().string())});
        text->setMarkdown(toQt(guide));
        window->show();
        window->raise();
        window->activateWindow();
        scrollTo(*text, guideHeading(guide, topic));
        return true;
    } catch (const PlatformError&) {
        return false;
    }
}

}  // namespace kolmera
