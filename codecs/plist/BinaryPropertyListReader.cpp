// SPDX-License-Identifier: MIT
#include <bit>
#include <cmath>
#include <cstring>

#include "base/Unicode.h"
#include "codecs/plist/BinaryPropertyList.h"

namespace annivo {

namespace {

using Malformed = MalformedPropertyList;

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

/// Walks the object table from the top object. Every use of an object is counted, so that objects
/// which hold one another many times over, or in a circle, meet a limit.
class Reader {
 public:
  Reader(std::string_view bytes, const PropertyListLimits& limits)
      : bytes_(bytes), limits_(limits) {}

  PropertyList read() {
    constexpr std::size_t kTrailer = 32;
    if (bytes_.size() < kBinaryPropertyListMagic.size() + kTrailer)
      throw Malformed{"It is cut off."};
    const std::string_view trailer = bytes_.substr(bytes_.size() - kTrailer);
    offsetSize_ = bigEndian(trailer.substr(6, 1));
    referenceSize_ = bigEndian(trailer.substr(7, 1));
    objects_ = bigEndian(trailer.substr(8, 8));
    const std::uint64_t top = bigEndian(trailer.substr(16, 8));
    table_ = bigEndian(trailer.substr(24, 8));
    const std::size_t end = bytes_.size() - kTrailer;
    const auto isSize = [](std::uint64_t size) { return size >= 1 && size <= 8; };
    if (!isSize(offsetSize_) || !isSize(referenceSize_) || table_ > end ||
        objects_ > (end - table_) / offsetSize_) {
      throw Malformed{"Its object table is damaged."};
    }
    return object(top, 0);
  }

 private:
  std::string_view at(std::uint64_t offset, std::uint64_t length) const {
    if (offset > table_ || length > table_ - offset) throw Malformed{"An object is cut off."};
    return bytes_.substr(offset, length);
  }

  std::uint64_t offsetOf(std::uint64_t reference) const {
    if (reference >= objects_) throw Malformed{"It refers to an object that is not there."};
    return bigEndian(bytes_.substr(table_ + reference * offsetSize_, offsetSize_));
  }

  std::string_view content(std::uint64_t offset, std::uint64_t length) {
    const std::string_view bytes = at(offset, length);
    content_ += length;
    if (content_ > limits_.content) throw Malformed{"It holds too much text and data."};
    return bytes;
  }

  /// The count of a text, data or collection, which begins at `offset` with its marker; moves
  /// `offset` behind it.
  std::uint64_t takeCount(std::uint64_t& offset) const {
    const std::uint64_t low = bigEndian(at(offset++, 1)) & 0x0F;
    if (low != 0x0F) return low;
    const std::uint64_t marker = bigEndian(at(offset++, 1));
    if (marker >> 4 != 1 || (marker & 0x0F) > 3) throw Malformed{"A count is no number."};
    const std::uint64_t size = std::uint64_t{1} << (marker & 0x0F);
    const std::uint64_t count = bigEndian(at(offset, size));
    offset += size;
    return count;
  }

  PropertyList object(std::uint64_t reference, std::size_t depth) {
    if (++nodes_ > limits_.nodes) throw Malformed{"It holds too many values."};
    std::uint64_t offset = offsetOf(reference);
    const std::uint64_t marker = bigEndian(at(offset, 1));
    switch (marker >> 4) {
      case 0x0:
        return singleByte(marker);
      case 0x1:
        return integer(offset, marker & 0x0F);
      case 0x2:
        return real(offset, marker & 0x0F);
      case 0x3:
        return date(offset, marker & 0x0F);
      case 0x4: {
        const std::uint64_t count = takeCount(offset);
        return PropertyList::Data{std::string(content(offset, count))};
      }
      case 0x5: {
        const std::uint64_t count = takeCount(offset);
        return repairedUTF8(content(offset, count));
      }
      case 0x6: {
        const std::uint64_t count = takeCount(offset);
        if (count > bytes_.size()) throw Malformed{"An object is cut off."};
        return fromUTF16(content(offset, 2 * count), ByteOrder::bigEndian);
      }
      case 0x8:
        return PropertyList::Foreign{std::string(at(offset, 2 + (marker & 0x0F)))};
      case 0xA:
        return array(offset, depth + 1);
      case 0xD:
        return dictionary(offset, depth + 1);
      default:
        throw Malformed{"It holds an object of an unknown kind."};
    }
  }

  static PropertyList singleByte(std::uint64_t marker) {
    if (marker == 0x08) return false;
    if (marker == 0x09) return true;
    if (marker == 0x00) return PropertyList::Foreign{std::string(1, '\0')};
    throw Malformed{"It holds an object of an unknown kind."};
  }

  PropertyList integer(std::uint64_t offset, std::uint64_t power) const {
    if (power > 4) throw Malformed{"A number has a wrong size."};
    const std::string_view number = at(offset + 1, std::uint64_t{1} << power);
    if (power < 4) return static_cast<std::int64_t>(bigEndian(number));  // 8 bytes have a sign
    const std::uint64_t high = bigEndian(number.substr(0, 8));
    const auto low = static_cast<std::int64_t>(bigEndian(number.substr(8)));
    if (high == (low < 0 ? ~std::uint64_t{0} : 0)) return low;
    return PropertyList::Foreign{std::string(at(offset, 17))};
  }

  PropertyList real(std::uint64_t offset, std::uint64_t power) const {
    if (power == 2) {
      const auto bits = static_cast<std::uint32_t>(bigEndian(at(offset + 1, 4)));
      return static_cast<double>(std::bit_cast<float>(bits));
    }
    if (power == 3) return std::bit_cast<double>(bigEndian(at(offset + 1, 8)));
    throw Malformed{"A number has a wrong size."};
  }

  PropertyList date(std::uint64_t offset, std::uint64_t power) const {
    if (power != 3) throw Malformed{"A date has a wrong size."};
    const auto moment =
        dateFromReferenceSeconds(std::bit_cast<double>(bigEndian(at(offset + 1, 8))));
    if (moment) return *moment;
    return PropertyList::Foreign{std::string(at(offset, 9))};
  }

  /// The count of a collection whose references begin behind it, `kinds` for each element.
  std::uint64_t takeElements(std::uint64_t& offset, std::size_t depth, std::uint64_t kinds) {
    if (depth > limits_.depth) throw Malformed{"It is nested too deeply."};
    const std::uint64_t count = takeCount(offset);
    if (count > bytes_.size()) throw Malformed{"An object is cut off."};
    (void)at(offset, kinds * count * referenceSize_);
    return count;
  }

  std::uint64_t reference(std::uint64_t offset, std::uint64_t index) const {
    return bigEndian(at(offset + index * referenceSize_, referenceSize_));
  }

  PropertyList array(std::uint64_t offset, std::size_t depth) {
    const std::uint64_t count = takeElements(offset, depth, 1);
    PropertyList::Array elements;
    for (std::uint64_t i = 0; i < count; ++i) {
      elements.push_back(object(reference(offset, i), depth));
    }
    return elements;
  }

  PropertyList dictionary(std::uint64_t offset, std::size_t depth) {
    const std::uint64_t count = takeElements(offset, depth, 2);
    PropertyList::Dictionary values;
    for (std::uint64_t i = 0; i < count; ++i) {
      const PropertyList key = object(reference(offset, i), depth);
      if (!key.string()) throw Malformed{"The key of a dictionary is no text."};
      values.insert_or_assign(*key.string(), object(reference(offset, count + i), depth));
    }
    return values;
  }

  std::string_view bytes_;
  const PropertyListLimits& limits_;
  std::uint64_t offsetSize_ = 0;
  std::uint64_t referenceSize_ = 0;
  std::uint64_t objects_ = 0;
  std::uint64_t table_ = 0;
  std::size_t nodes_ = 0;
  std::size_t content_ = 0;
};

}  // namespace

PropertyList readBinaryPropertyList(std::string_view bytes, const PropertyListLimits& limits) {
  return Reader(bytes, limits).read();
}

}  // namespace annivo
