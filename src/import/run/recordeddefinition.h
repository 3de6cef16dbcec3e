#pragma once

#include <optional>
#include <string>

#include "history/recordreader.h"
#include "platform/encodings.h"
#include "source/sourceformat.h"

namespace kolmera {

/// How the run of a record read its price file.
struct RecordedDefinition {
    /// What the articles of the file are found by.
    enum class Key { Number, SearchName, SupplierArticle, Alternative };
    Key key = Key::Number;
    std::string supplier;  ///< whose articles they are; empty where the file, or nobody, says
    CodePage codePage = CodePage::Windows1252;
    /// What the file was, where its rows were converted first: the places of records are not those in the file.
    std::optional<SourceFormat> source = std::nullopt;
};

RecordedDefinition recordedDefinition(const RunHeader& run);

/// Whether the run emptied the tables of the company first.
bool emptiedTables(const RunHeader& run);

}  // namespace kolmera
