#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "definitions/maskfile.h"

namespace kolmera {

/// What a run would do with one record of a sample file, without doing it.
struct SampleValues {
    enum class Product { NoKey, NotRead, Existing, New, PriceListOnly, Unknown };
    /// What a relation gives, as the user writes such values. Empty where there is nothing to say.
    struct Value {
        std::string raw;      ///< the piece of the record, without blanks around it
        std::string read;     ///< as the column's kind of value
        bool unread = false;  ///< the piece is not empty, and no value of that kind
        std::string present, after;
    };
    Product product = Product::NoKey;
    std::string number, name;   ///< of the product
    std::string whyUnknown;     ///< the company cannot be asked
    std::vector<Value> values;  ///< one for each relation; none when the file has no such record
};

/// `record` counts from 0.
using SampleRun = std::function<SampleValues(const Mask&, const std::vector<Relation>&,
                                             const std::filesystem::path& sample, std::int64_t record)>;

}  // namespace kolmera
