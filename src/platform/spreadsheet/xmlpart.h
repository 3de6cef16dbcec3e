#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/bytestream.h"
#include "platform/error.h"
#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// The attributes of an element. Names are without their namespace.
class XmlAttributes {
  public:
    explicit XmlAttributes(const char* const* namesAndValues) : namesAndValues_(namesAndValues) {}

    /// The value; empty when there is no such attribute.
    [[nodiscard]] std::string_view operator[](std::string_view name) const;
    [[nodiscard]] bool isTrue(std::string_view name) const;
    /// Hands over the name of each.
    void forEach(const std::function<void(std::string_view name)>& take) const;
    /// Whether one of the attributes of this name, in whatever namespace, has the value.
    [[nodiscard]] bool has(std::string_view name, std::string_view value) const;

  private:
    const char* const* namesAndValues_;
};

/// What is done with the elements of a part, in the order in which they come. Names are without their namespace, so
/// that the strict and the transitional form of the format are one.
class XmlHandler {
  public:
    virtual ~XmlHandler() = default;
    virtual void start(std::string_view name, const XmlAttributes& attributes) = 0;
    virtual void end(std::string_view /*name*/) {}
    /// Text comes in pieces of any length.
    virtual void text(std::string_view /*piece*/) {}
};

/// Reads XML from front to back, in memory that does not grow with it. XML that is not well formed, declares a document
/// type or (where that is allowed) an entity, or is nested too deeply is refused.
class XmlReader {
  public:
    enum class DocumentType { Refused, WithoutEntities };
    /// What to throw, for a reason in English.
    using Refusal = std::function<PlatformError(const std::string& reason)>;

    XmlReader(std::unique_ptr<ByteStream> stream, XmlHandler& handler, Refusal refusal,
              DocumentType documentType = DocumentType::Refused);
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;
    ~XmlReader();

    /// Reads on until the handler says `pause`; false when the end has come instead.
    bool readOn();
    /// For the handler, within a call of its functions: at most what belongs to the same element is still told.
    void pause();
    [[nodiscard]] double progress() const;

  private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

/// What is wrong with a part of a workbook.
XmlReader::Refusal damagedPart(const std::string& part);

/// Reads a part of a workbook of up to `most` bytes, in memory that does not grow with it. A part that is not well
/// formed, has a document type (and with it entities), or is nested too deeply is refused with kUnreadableSpreadsheet.
void readXmlPart(const Archive& archive, const std::string& part, std::uint64_t most, XmlHandler& handler);

/// Bytes that a part of the workbook's frame may have (relations, the list of sheets, styles).
inline constexpr std::uint64_t kMostFrameBytes = std::uint64_t{64} << 20;

}  // namespace kolmera
