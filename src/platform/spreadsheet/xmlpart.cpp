#include "platform/spreadsheet/xmlpart.h"

#include <expat.h>
#include <fmt/format.h>

#include <exception>
#include <memory>
#include <new>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr char kSeparator = ' ';

std::string_view withoutNamespace(std::string_view name) { return name.substr(name.rfind(kSeparator) + 1); }

/// For the sets of one byte a character that the parser does not know itself.
int describeEncoding(void*, const XML_Char* name, XML_Encoding* encoding) {
    constexpr struct {
        std::string_view name;
        CodePage page;
    } kPages[] = {{"WINDOWS-1252", CodePage::Windows1252},
                  {"CP1252", CodePage::Windows1252},
                  {"ISO-8859-15", CodePage::Latin9},
                  {"CP850", CodePage::Oem850},
                  {"IBM850", CodePage::Oem850},
                  {"LATIN1", CodePage::Latin1}};
    const std::string asked = upperCase(name);
    for (const auto& row : kPages) {
        if (row.name != asked) continue;
        for (int byte = 0; byte < 256; ++byte) {
            const std::string text = toUtf8(std::string(1, static_cast<char>(byte)), row.page);
            encoding->map[byte] = static_cast<int>(firstCharacter(text).character.value_or(0xFFFD));
        }
        encoding->data = nullptr;
        encoding->convert = nullptr;
        encoding->release = nullptr;
        return XML_STATUS_OK;
    }
    return XML_STATUS_ERROR;
}

}  // namespace

/// The parser and the way from its callbacks, which must not throw, to the handler and back.
class XmlReader::Parser {
  public:
    Parser(std::unique_ptr<ByteStream> stream, XmlHandler& handler, Refusal refusal, DocumentType documentType)
        : stream_(std::move(stream)),
          handler_(handler),
          refusal_(std::move(refusal)),
          parser_(XML_ParserCreateNS(nullptr, kSeparator)) {
        if (!parser_) throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(parser_.get(), onStart, onEnd);
        XML_SetCharacterDataHandler(parser_.get(), onText);
        XML_SetUnknownEncodingHandler(parser_.get(), describeEncoding, nullptr);
        XML_SetEntityDeclHandler(parser_.get(), onEntity);
        if (documentType == DocumentType::Refused) XML_SetStartDoctypeDeclHandler(parser_.get(), onDoctype);
    }

    bool readOn() {
        for (bool resumed = paused_;; resumed = false) {
            if (finished_ && !resumed) return false;
            paused_ = false;
            const XML_Status status = resumed ? XML_ResumeParser(parser_.get()) : parseNext();
            if (failure_) std::rethrow_exception(failure_);
            if (status == XML_STATUS_ERROR) {
                refuse(fmt::format("line {}: {}", XML_GetCurrentLineNumber(parser_.get()),
                                   XML_ErrorString(XML_GetErrorCode(parser_.get()))));
            }
            if (paused_) return true;
            // A tag or a comment is kept in memory until its end has come.
            if (fed_ - XML_GetCurrentByteIndex(parser_.get()) > kMostPending) refuse("a tag is too long");
        }
    }

    void pause() {
        paused_ = true;
        XML_StopParser(parser_.get(), XML_TRUE);
    }
    [[nodiscard]] double progress() const { return stream_->progress(); }

  private:
    static constexpr int kMostDepth = 200;
    static constexpr XML_Index kMostPending = 16 << 20;
    static constexpr int kPiece = 64 << 10;

    XML_Status parseNext() {
        void* const piece = XML_GetBuffer(parser_.get(), kPiece);
        if (!piece) throw std::bad_alloc();
        const auto got = static_cast<int>(stream_->read(static_cast<char*>(piece), kPiece));
        fed_ += got;
        finished_ = got == 0;
        return XML_ParseBuffer(parser_.get(), got, finished_ ? XML_TRUE : XML_FALSE);
    }

    [[noreturn]] void refuse(const std::string& reason) const { throw PlatformError(refusal_(reason)); }

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
    static void onEntity(void* self, const XML_Char*, int, const XML_Char*, int, const XML_Char*, const XML_Char*,
                         const XML_Char*, const XML_Char*) {
        guarded(self, [](const Parser& parser) { parser.refuse("it declares an entity"); });
    }

    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };
    std::unique_ptr<ByteStream> stream_;
    XmlHandler& handler_;
    Refusal refusal_;
    std::unique_ptr<XML_ParserStruct, Free> parser_;
    std::exception_ptr failure_;
    int depth_ = 0;
    XML_Index fed_ = 0;
    bool paused_ = false;
    bool finished_ = false;
};

XmlReader::XmlReader(std::unique_ptr<ByteStream> stream, XmlHandler& handler, Refusal refusal,
                     DocumentType documentType)
    : parser_(std::make_unique<Parser>(std::move(stream), handler, std::move(refusal), documentType)) {}

XmlReader::~XmlReader() = default;

bool XmlReader::readOn() { return parser_->readOn(); }
void XmlReader::pause() { parser_->pause(); }
double XmlReader::progress() const { return parser_->progress(); }

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

void XmlAttributes::forEach(const std::function<void(std::string_view name)>& take) const {
    for (const char* const* at = namesAndValues_; *at; at += 2) take(withoutNamespace(at[0]));
}

bool XmlAttributes::has(std::string_view name, std::string_view value) const {
    for (const char* const* at = namesAndValues_; *at; at += 2) {
        if (withoutNamespace(at[0]) == name && at[1] == value) return true;
    }
    return false;
}

XmlReader::Refusal damagedPart(const std::string& part) {
    return [part](const std::string& reason) {
        return PlatformError(errors::kUnreadableSpreadsheet,
                             fmt::format("The part {} of the workbook is damaged: {}.", part, reason));
    };
}

void readXmlPart(const Archive& archive, const std::string& part, std::uint64_t most, XmlHandler& handler) {
    XmlReader(archive.openPart(part, most), handler, damagedPart(part)).readOn();
}

}  // namespace kolmera
