#include "history/window/changeprint.h"

#include <QPagedPaintDevice>
#include <QPainter>
#include <algorithm>
#include <array>

#include "lang/keys/changes.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kPoints = 8, kTitlePoints = 12;
/// Parts of the page's width that the columns take.
constexpr std::array<int, ChangeTable::kColumns> kWidths{11, 24, 25, 9, 9, 9, 8, 5};
constexpr int kWidth = 100;
constexpr std::array kNumbers{ChangeTable::kBefore, ChangeTable::kAfter, ChangeTable::kPercent, ChangeTable::kRecord};

/// Writes lines from the top of a page to its foot, and begins the next one with the headings.
class Pages {
  public:
    Pages(QPagedPaintDevice& device, ChangeTable::Cells headings, std::function<QString(int)> foot)
        : device_(device), painter_(&device), headings_(std::move(headings)), foot_(std::move(foot)) {
        painter_.setFont(font(kPoints));
        painter_.setPen(Qt::black);
        line_ = painter_.fontMetrics().lineSpacing();
    }

    [[nodiscard]] bool works() const { return painter_.isActive() && works_; }

    void text(const QString& text, int points = kPoints, bool bold = false) {
        painter_.setFont(font(points, bold));
        const QRect room(0, y_, device_.width(), device_.height());
        QRect used;
        painter_.drawText(room, Qt::TextWordWrap, text, &used);
        y_ += used.height();
        painter_.setFont(font(kPoints));
        breakIfFull();
    }
    void gap() { y_ += line_ / 2; }
    void headings() {
        painter_.setFont(font(kPoints, true));
        row(headings_);
        painter_.setFont(font(kPoints));
        painter_.drawLine(0, y_, device_.width(), y_);
    }
    void cells(const ChangeTable::Cells& cells, bool bold) {
        breakIfFull();
        painter_.setFont(font(kPoints, bold));
        row(cells);
    }
    void finish() { drawFoot(); }

  private:
    [[nodiscard]] QFont font(int points, bool bold = false) const {
        QFont font;
        font.setPointSize(points);
        font.setBold(bold);
        return {font, &device_};
    }

    void row(const ChangeTable::Cells& cells) {
        int x = 0;
        const int between = painter_.fontMetrics().averageCharWidth();
        for (std::size_t column = 0; column < cells.size(); ++column) {
            const int width = device_.width() * kWidths.at(column) / kWidth;
            const bool number = std::ranges::find(kNumbers, static_cast<int>(column)) != kNumbers.end();
            const QRect rect(x, y_, width - between, line_);
            const QString text =
                painter_.fontMetrics().elidedText(toQt(cells.at(column)), Qt::ElideRight, rect.width());
            const Qt::Alignment place = Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft);
            painter_.drawText(rect, static_cast<int>(place), text);
            x += width;
        }
        y_ += line_;
    }

    void breakIfFull() {
        if (y_ + 3 * line_ <= device_.height()) return;
        drawFoot();
        works_ = works_ && device_.newPage();
        ++page_;
        y_ = 0;
        headings();
    }

    void drawFoot() {
        painter_.setFont(font(kPoints));
        painter_.drawText(QRect(0, device_.height() - line_, device_.width(), line_), Qt::AlignRight, foot_(page_));
    }

    QPagedPaintDevice& device_;
    QPainter painter_;
    ChangeTable::Cells headings_;
    std::function<QString(int)> foot_;
    int line_ = 0, y_ = 0, page_ = 1;
    bool works_ = true;
};

}  // namespace

int ChangePrint::pages(QPagedPaintDevice& device) const {
    QFont font;
    font.setPointSize(kPoints);
    const int lines = device.height() / QFontMetrics(font, &device).lineSpacing() - 3;
    return lines < 1 ? 0 : static_cast<int>(report_.list().count() / lines) + 1;
}

bool ChangePrint::print(QPagedPaintDevice& device, const ChangeTable::KeepOn& keepOn) const {
    const QString title = toQt(report_.title());
    const QString page = toQt(texts_.ModulText(text::changes::kPage));
    Pages pages(device, table_.headings(),
                [&](int number) { return title + QStringLiteral("   ") + page + ' ' + QString::number(number); });
    pages.text(title, kTitlePoints, true);
    pages.text(toQt(report_.origin()));
    pages.gap();
    for (const ChangeReport::Figure& figure : report_.figures()) {
        pages.text(toQt(figure.caption + ": " + figure.value));
    }
    pages.gap();
    for (const Notice& notice : report_.notices()) pages.text(toQt(report_.lineOf(notice)), kPoints, notice.warning);
    pages.gap();
    pages.headings();
    const bool whole = table_.forEach([&](const ChangeRow& row) { pages.cells(table_.cells(row), row.members > 0); },
                                      [&](std::int64_t rows) { return pages.works() && keepOn(rows); });
    pages.finish();
    return whole && pages.works();
}

}  // namespace kolmera
