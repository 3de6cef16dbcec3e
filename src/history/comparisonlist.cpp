#include "history/comparisonlist.h"

#include <fmt/format.h>

#include "history/changetable.h"
#include "lang/keys/changes.h"
#include "lang/keys/comparison.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/spreadsheet/workbook.h"

namespace kolmera {
namespace {

constexpr struct {
    ModuleKey heading;
    const char* term;  ///< of SQL, what the rows are sorted by
    int size;          ///< in a sheet
} kColumnRows[ComparisonList::kColumns] = {
    {text::changes::kKindHeading, "isnew DESC, key COLLATE SVENSKA", 30},
    {text::comparison::kArticle, "key COLLATE SVENSKA", 50},
    {text::comparison::kProduct, "product COLLATE SVENSKA", 20},
    {text::changes::kNameHeading, "name COLLATE SVENSKA", 60},
};

}  // namespace

ComparisonList::ComparisonList(FileComparison& comparison, LanguageTexts& texts, const Locale& locale)
    : connection_(comparison.connection()), texts_(texts), locale_(locale) {
    article_ = SqliteStatement(connection_, "SELECT isnew, key, product, name FROM article WHERE n = ?1");
}

void ComparisonList::nameArticles(
    const std::function<void(const std::function<void(const NamedArticle&)>& take)>& each) {
    connection_.run("CREATE INDEX IF NOT EXISTS article_key ON article(key COLLATE NOCASE)");
    SqliteStatement name(connection_,
                         "UPDATE article SET product = ?2, name = ?3, search = search || ?4 "
                         "WHERE key = ?1 COLLATE NOCASE AND product = ''");
    each([&](const NamedArticle& article) {
        if (article.product.empty()) return;
        const std::string search = lowerCase(fmt::format("\n{}\n{}", article.product, article.name));
        name.bind(1, article.article);
        name.bind(2, article.product);
        name.bind(3, article.name);
        name.bind(4, std::string_view(search));
        name.run();
    });
}

void ComparisonList::show(const ComparisonQuery& query) {
    std::string statement = "SELECT n FROM article WHERE 1";
    if (query.isNew) statement += *query.isNew ? " AND isnew" : " AND NOT isnew";
    std::vector<std::string> words = split(lowerCase(query.text), " ");
    std::erase(words, std::string());
    for (std::size_t word = 1; word <= words.size(); ++word) statement += fmt::format(" AND instr(search, ?{})", word);
    std::string order = kColumnRows[query.sort].term;
    if (query.descending) order = replaceAll(order, " DESC", "") + " DESC";
    statement += fmt::format(" ORDER BY {}, n", order);
    SqliteStatement rows(connection_, statement);
    for (std::size_t word = 0; word < words.size(); ++word)
        rows.bind(static_cast<int>(word) + 1, std::string_view(words[word]));
    order_.clear();
    while (rows.step()) order_.push_back(rows.integer(0));
}

ComparisonList::Cells ComparisonList::headings() const {
    Cells cells;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        cells[column] = texts_.ModulText(kColumnRows[column].heading);
    }
    return cells;
}

ComparisonList::Cells ComparisonList::cells(std::int64_t row) {
    const StatementUse use(article_);
    article_.bind(1, order_.at(static_cast<std::size_t>(row)));
    if (!article_.step()) return {};
    const bool isNew = article_.integer(0) != 0;
    return {texts_.ModulText(isNew ? text::changes::kAdded : text::comparison::kGoneCell),
            std::string(article_.text(1)), std::string(article_.text(2)), std::string(article_.text(3))};
}

std::string ComparisonList::line(const Cells& cells) const { return tabbedLine(cells, locale_); }

void ComparisonList::save(const std::filesystem::path& file) {
    if (lowerCase(file.extension().string()) != ".xlsx") {
        OutputFile output(file);
        output.write(line(headings()) + "\r\n");
        for (std::int64_t row = 0; row < count(); ++row) output.write(line(cells(row)) + "\r\n");
        return output.finish();
    }
    std::vector<SheetColumn> columns;
    const Cells names = headings();
    for (std::size_t column = 0; column < names.size(); ++column) {
        columns.push_back({names[column], FieldType::Text, kColumnRows[column].size});
    }
    std::int64_t row = 0;
    addSheet(file, texts_.ModulText(text::changes::kSheet), columns, [&]() -> std::optional<std::vector<Value>> {
        if (row == count()) return std::nullopt;
        std::vector<Value> values;
        for (std::string& cell : cells(row++)) values.emplace_back(std::move(cell));
        return values;
    });
}

}  // namespace kolmera
