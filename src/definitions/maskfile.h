#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recordfile.h"

namespace kolmera {

class RecordChange;

inline constexpr int kMaskNameLength = 100;  ///< characters
inline constexpr int kMostRelations = 100;
inline constexpr int kMostMasks = 999;  ///< three digits in PRISMPOS.TXT

/// One relation of a mask: a source field joined to a target (record of PRISMPOS.TXT).
struct Relation {
    int Källa = 0;        ///< source number, from 1
    int Mål = 0;          ///< target code
    int FrånPos = 0;      ///< first byte of the piece, from 1 ("P")
    int Längd = 0;        ///< bytes of the piece ("P")
    char TypKod = 'I';    ///< update rule: U, S, I, 1, 2, 3
    char Division = 'I';  ///< S search key, R discount code, 1-3 implied decimals, I none

    bool operator==(const Relation&) const = default;
};

/// A field mask (file type): a record of PRISMASK.TXT, without its relations.
struct Mask {
    int number = 0;  ///< record number, 0 for a new mask
    std::string Namn;
    char FilTyp = 'F';       ///< F lines, T tab-separated, P fixed length
    char Tecken = 'N';       ///< J the DOS character set, N Windows
    char SkapaNya = 'N';     ///< J creates products
    char UppdatLev = 'N';    ///< J the prices belong to the job's supplier
    std::string AntalRader;  ///< as typed
    std::string Postlängd;   ///< as typed
    int AntalKolumner = 0;

    bool operator==(const Mask&) const = default;
};

/// A mask as it is stored, with every relation in file order (a reader uses the first hundred).
struct WholeMask {
    Mask mask;
    std::vector<Relation> relations;

    bool operator==(const WholeMask&) const = default;
};

/// The masks in PRISMASK.TXT and their relations in PRISMPOS.TXT of the data folder. Both files are read at one moment
/// and changed together.
class MaskFile {
  public:
    explicit MaskFile(std::filesystem::path dataFolder) : folder_(std::move(dataFolder)) {}

    [[nodiscard]] std::vector<Mask> all() const;
    [[nodiscard]] std::optional<WholeMask> read(int number) const;
    /// The first mask whose trimmed name equals `name` exactly.
    [[nodiscard]] std::optional<WholeMask> find(std::string_view name) const;
    /// Writes the mask (appended when new) and its relations in place of the old ones. For "P" the source numbers are
    /// made equal to the place in the list. Throws PlatformError beyond 100 relations or 999 masks. Returns the number.
    int save(const Mask& mask, const std::vector<Relation>& relations);

    // For windows. Throws PlatformError, and changes nothing: kChangedElsewhere when the records are no longer those
    // that were shown.
    /// Saves over the mask that was shown, or appends a new one. kDuplicateKey for a new name that another mask has
    /// (letter case does not count).
    int save(const Mask& mask, const std::vector<Relation>& relations, const std::optional<WholeMask>& shown);
    /// Removes the masks, which were all of one name, with their relations and renumbers the rest.
    void remove(const std::vector<Mask>& shown);

  private:
    std::filesystem::path folder_;
};

/// Within a change of several files: writes the mask over the first one of its name, which has to be the one that was
/// shown (kChangedElsewhere), or appends it.
void putMask(RecordChange& change, const WholeMask& mask, const std::optional<WholeMask>& shown);

}  // namespace kolmera
