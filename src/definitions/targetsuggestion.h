#pragma once

#include <string>
#include <vector>

#include "definitions/headingwords.h"
#include "definitions/supplierlist.h"
#include "definitions/targetlist.h"

namespace kolmera {

/// A field of the sample, in all records that are looked at.
struct FieldSample {
    std::string heading;  ///< empty when the file has none
    std::vector<std::string> values;
};

/// What a field seems to be read into, and why.
struct TargetSuggestion {
    enum class Reason { Heading, CheckDigits, Suppliers, Dates, Prices };

    int source = 0;  ///< from 1
    int target = 0;  ///< its code
    char TypKod = 'U';
    char Division = 'I';
    Reason reason = Reason::Heading;
};

/// Thirteen digits, the last of which is the right check digit.
bool isEan(std::string_view text);

/// The targets that the fields' headings mean, and, for fields without one, what their contents show: numbers with
/// check digits, suppliers of the company, dates, prices. A target is suggested once; none of `taken`, and no field of
/// `joined` (sources, from 1). An article number of a mask that makes products is their number as well. The search
/// key, which no mask of `hasKey` gets, comes first; the rest in the order of the fields.
struct SuggestionSurroundings {
    const TargetList& targets;
    const HeadingWords& words;
    const std::vector<SupplierRow>& suppliers;
    std::vector<int> taken;
    std::vector<int> joined;
    bool hasKey = false;
    bool makesProducts = false;
};
std::vector<TargetSuggestion> suggestTargets(const std::vector<FieldSample>& fields,
                                             const SuggestionSurroundings& around);

/// Whether a record is the line of headings: at least two of its fields mean something, and none is a number.
bool areHeadings(const std::vector<std::string>& record, const HeadingWords& words);

}  // namespace kolmera
