// The value of the extended attribute in which Samba and Wine keep what a POSIX file system has no place for.
//
// It comes in six forms. The plain one is the bits as hexadecimal text, "0x22": what Wine writes. In the
// records 1 to 5 of Samba the same text, or an empty one, ends with a NUL, and behind it stand, aligned and
// with the lower byte first,
//
//   version   16 bits, twice
//   1         bits, size of attributes, size, allocated size, time of creation, time of change
//   2         flags, and then as 1, time of the last write, name
//   3         which fields hold, and then as 1
//   4         which fields hold, bits, time when the file came to be, time of creation
//   5         which fields hold, bits, time of creation
//
// with 32 bits for bits, flags and the size of attributes and 64 for all others. Wine reads the text in front
// and no record, so it reads nothing in what Samba writes as 4 and 5, where it is empty. Samba passes over
// the text of a record, whichever it is.
//
// Without a value a name that begins with a dot is hidden. Wine tells with "0x0" that such a file is not.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvex::runtime::attributes {

inline constexpr const char* storedAttributesName = "user.DOSATTRIB";

/// The bits as Windows numbers them. The others, as read-only (1) and folder (0x10), are nobody's business
/// here and stay as they are.
enum StoredBit : std::uint32_t { hiddenBit = 0x02, systemBit = 0x04, archiveBit = 0x20 };

class StoredAttributes {
public:
    /// From the value of the extended attribute, empty where there is none. Text that is no number holds no
    /// bits, and neither does a record of no known form.
    explicit StoredAttributes(std::string_view value, bool isHiddenByName = false);

    std::uint32_t bits() const noexcept { return bits_; }

    /// False for a record of no known form, as of a newer version, or one that was cut off: nobody here can
    /// tell what would be lost with it.
    bool isKnown() const noexcept { return isKnown_; }

    /// The value with other bits, in a form that both Samba and Wine read (but a record of version 2, whose
    /// name is too long for Wine): the plain one for what was plain, and otherwise the same record with all
    /// its other fields. Empty when there is nothing to be kept. Only for what is known.
    std::string valueWith(std::uint32_t bits) const;

private:
    /// False when it is of no known form.
    bool readRecord(std::string_view value, std::size_t position);

    static constexpr unsigned plain = 0;

    const bool isHiddenByName_;
    bool isKnown_ = true;
    std::uint32_t bits_ = 0;
    unsigned version_ = plain;
    /// What stands behind the two versions of a record.
    std::string fields_;
};

}  // namespace korvex::runtime::attributes
