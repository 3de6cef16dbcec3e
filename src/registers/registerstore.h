#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "db/sqllayer.h"
#include "registers/register.h"

namespace kolmera {

/// Where the rows of a register lie: values as they are stored, no checks and no transactions.
class RegisterStore {
  public:
    RegisterStore() = default;
    RegisterStore(const RegisterStore&) = delete;
    RegisterStore& operator=(const RegisterStore&) = delete;
    virtual ~RegisterStore() = default;

    /// Type, size and bounds of the columns, without captions; the key's come first.
    [[nodiscard]] virtual std::vector<RegisterColumn> columns() const = 0;
    [[nodiscard]] virtual int keys() const = 0;
    /// What a cell takes, where its row has a say in it.
    virtual void refine(const RegisterRow& /*row*/, int /*column*/, RegisterColumn& /*cell*/) const {}
    /// Gives one row after the other, and false behind the last.
    virtual std::function<bool(RegisterRow&)> rows() = 0;
    [[nodiscard]] virtual std::optional<RegisterRow> find(std::span<const Value> key) = 0;
    virtual void add(const RegisterValues& values) = 0;
    virtual void change(const RegisterRow& row, const RegisterValues& values) = 0;
    virtual void remove(const RegisterRow& row) = 0;
};

std::unique_ptr<RegisterStore> tableStore(const RegisterDefinition& definition, SqlLayer& sql);
std::unique_ptr<RegisterStore> settingStore(const RegisterDefinition& definition, SqlLayer& sql, LanguageTexts& texts);

}  // namespace kolmera
