#include "platform/spreadsheet/xmlpart.h"

#include <expat.h>
#include <fmt/format.h>

#include <exception>
#include <memory>
#include <new>

#include "platform/error.h"

namespace kolmera {

namespace {

constexpr char kSeparator = ' ';

std::string_view withoutNamespace(std::string_view name) { return name.substr(name.rfind(kSeparator) + 1); }

/// The parser and the way from its callbacks, which must not throw, to the handler and back.
class Parser {
  public:
    Parser(const std::string& part, XmlHandler& handler)
        : part_(part), handler_(handler), parser_(XML_ParserCreateNS(nullptr, kSeparator)) {
        if (!parser_) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetStartDoctypeDeclHandler(parser_.get(), onDoctype);
    }

    void parse(std::string_view piece, bool last) {
        const auto length = static_cast<int>(piece.size());
        const XML_Status status = XML_Parse(parser_.get(), piece.data(), length, last ? XML_TRUE : XML_FALSE);
        if (failure_) std::rethrow_exception(failure_);
        if (status != XML_STATUS_OK) {
            refuse(fmt::format("line {}: {}", XML_GetCurrentLineNumber(parser_.get()),
                               XML_ErrorString(XML_GetErrorCode(parser_.get()))));
        }
        // A tag or a comment is kept in memory until its end has come.
        fed_ += length;
        if (fed_ - XML_GetCurrentByteIndex(parser_.get()) > kMostPending) refuse("a tag is too long");
    }

  private:
    static constexpr int kMostDepth = 200;
    static constexpr XML_Index kMostPending = 16 << 20;

    [[noreturn]] void refuse(const std::string& reason) const {
        throw PlatformError(errors::kUnreadableSpreadsheet,
                            fmt::format("The part {} of the workbook is damaged: {}.", part_, reason));
    }

    template <typename Action>
    static void guarded(void* self, Action action) noexcept {
        auto& parser = *static_cast<Parser*>(self);
        if (parser.failure_) return;
        try {
            action(parser);
        } catch (...) {
            parser.failure_ = std::current_exception();
            XML_StopParser(parser.parser_.get(), XML_FALSE);
        }
    }

    static void onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        guarded(self, [&](Parser& parser) {
            if (++parser.depth_ > kMostDepth) parser.refuse("it is nested too deeply");
            parser.handler_.start(withoutNamespace(name), XmlAttributes(attributes));
        });
    }
    static void onEnd(void* self, const XML_Char* name) {
        guarded(self, [&](Parser& parser) {
            --parser.depth_;
            parser.handler_.end(withoutNamespace(name));
        });
    }
    static void onText(void* self, const XML_Char* text, int length) {
        guarded(self, [&](Parser& parser) {
            parser.handler_.text(std::string_view(text, static_cast<std::size_t>(length)));
        });
    }
    static void onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        guarded(self, [](const Parser& parser) { parser.refuse("it declares a document type"); });
    }

    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };
    const std::string& part_;
    XmlHandler& handler_;
    std::unique_ptr<XML_ParserStruct, Free> parser_;
    std::exception_ptr failure_;
    int depth_ = 0;
    XML_Index fed_ = 0;
};

}  // namespace

std::string_view XmlAttributes::operator[](std::string_view name) const {
    for (const char* const* at = namesAndValues_; *at; at += 2) {
        if (withoutNamespace(at[0]) == name) return at[1];
    }
    return {};
}

bool XmlAttributes::isTrue(std::string_view name) const {
    const std::string_view value = (*this)[name];
    return value == "1" || value == "true" || value == "on";
}

void readXmlPart(const Archive& archive, const std::string& part, std::uint64_t most, XmlHandler& handler) {
    Parser parser(part, handler);
    archive.stream(part, most, [&parser](std::string_view piece) { parser.parse(piece, false); });
    parser.parse({}, true);
}

}  // namespace kolmera
