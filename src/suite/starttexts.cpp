#include "suite/starttexts.h"

#include "lang/keys/shared.h"
#include "suite/wordtable.h"

namespace kolmera {
namespace {

namespace shared = text::shared;

constexpr MessageKey kMessages[] = {
    shared::kMessage,       shared::kError,         shared::kAskToSave,         shared::kRecordExists,
    shared::kRecordMissing, shared::kRecordInUse,   shared::kRecordChanged,     shared::kMonday,
    shared::kTuesday,       shared::kWednesday,     shared::kThursday,          shared::kFriday,
    shared::kQuotation,     shared::kOrder,         shared::kOrderConfirmation, shared::kPickingList,
    shared::kDeliveryNote,  shared::kInvoice,       shared::kCreditNote,        shared::kReminder,
    shared::kPriceRequest,  shared::kPurchaseOrder, shared::kGoodsReceipt};

}  // namespace

StartTexts::StartTexts(LanguageTexts& texts) : words_(wordTable(texts.language())) {
    for (const MessageKey key : kMessages) messages_[key.number] = texts.ResText(key);
}

const std::string& StartTexts::Ordtabell(int entry) const { return words_.at(static_cast<std::size_t>(entry)); }

std::string StartTexts::message(int number) const {
    const auto found = messages_.find(number);
    return found == messages_.end() ? std::string() : found->second;
}

}  // namespace kolmera
