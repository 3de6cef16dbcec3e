#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/bytestream.h"
#include "platform/descriptor.h"
#include "source/rowreader.h"

namespace kolmera {

/// What a price file holds, taken out of the .zip or .gz that it lies in. A workbook, though it is a .zip file, is one
/// file.
class SourceFile {
  public:
    /// `member` is the name of a file in the .zip or a pattern (*, ?), without regard to letter case; empty for the
    /// only one. Throws kSeveralMembers (about: their names) and kNoSuchMember.
    static SourceFile of(Descriptor file, const std::string& member, const SourceLimits& limits);
    /// These bytes.
    static SourceFile ofBytes(std::string bytes);
    /// The names of the files in a .zip; none where the file is another one.
    static std::vector<std::string> membersOf(const Descriptor& file);

    /// The first bytes, a few hundred.
    [[nodiscard]] const std::string& beginning() const { return beginning_; }
    /// The one that is read out of a .zip file; empty where there is none.
    [[nodiscard]] const std::string& member() const { return member_; }

    /// The bytes from front to back. The last call, as is the other one.
    std::unique_ptr<ByteStream> stream() &&;
    /// The same as a file that can be read in several places.
    Descriptor file() &&;

  private:
    void unpack();

    std::string member_;
    std::string beginning_;
    std::optional<Descriptor> file_;  ///< what is read, where it can be read in several places as it lies
    std::unique_ptr<ByteStream> stream_;
    SourceLimits limits_;
};

}  // namespace kolmera
