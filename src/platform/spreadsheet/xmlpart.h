#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// The attributes of an element. Names are without their namespace.
class XmlAttributes {
  public:
    explicit XmlAttributes(const char* const* namesAndValues) : namesAndValues_(namesAndValues) {}

    /// The value; empty when there is no such attribute.
    [[nodiscard]] std::string_view operator[](std::string_view name) const;
    [[nodiscard]] bool isTrue(std::string_view name) const;

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

/// Reads a part of a workbook of up to `most` bytes, in memory that does not grow with it. A part that is not well
/// formed, has a document type (and with it entities), or is nested too deeply is refused with kUnreadableSpreadsheet.
void readXmlPart(const Archive& archive, const std::string& part, std::uint64_t most, XmlHandler& handler);

/// Bytes that a part of the workbook's frame may have (relations, the list of sheets, styles).
inline constexpr std::uint64_t kMostFrameBytes = std::uint64_t{64} << 20;

}  // namespace kolmera
