// SPDX-License-Identifier: MIT
#include <algorithm>
#include <bit>

#include "base/Unicode.h"
#include "codecs/plist/BinaryPropertyList.h"

namespace annivo {

void appendBigEndian(std::string& bytes, std::uint64_t value, unsigned size) {
  for (unsigned i = size; i > 0; --i) bytes += static_cast<char>(value >> (8 * (i - 1)) & 0xFF);
}

namespace {

unsigned bytesFor(std::uint64_t largest) {
  unsigned size = 1;
  while (size < 8 && largest >> (8 * size) != 0) size *= 2;
  return size;
}

/// UTF-16, big endian, of valid UTF-8.
std::string toUTF16(std::string_view text) {
  std::string units;
  for (std::size_t i = 0; i < text.size();) {
    const auto first = static_cast<unsigned char>(text[i]);
    const unsigned length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    std::uint32_t c = length == 1 ? first : first & (0x7Fu >> length);
    for (unsigned k = 1; k < length; ++k) {
      c = c << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
    }
    i += length;
    if (c >= 0x10000) {
      appendBigEndian(units, 0xD800 + ((c - 0x10000) >> 10), 2);
      c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    appendBigEndian(units, c, 2);
  }
  return units;
}

/// Writes every value as an object of its own; texts and numbers are not shared.
class Writer {
 public:
  std::string write(const PropertyList& value) {
    referenceSize_ = bytesFor(count(value));
    bytes_ = kBinaryPropertyListMagic;
    add(value);
    const std::uint64_t table = bytes_.size();
    const unsigned offsetSize = bytesFor(table);
    for (const std::uint64_t offset : offsets_) appendBigEndian(bytes_, offset, offsetSize);
    bytes_.append(6, '\0');
    appendBigEndian(bytes_, offsetSize, 1);
    appendBigEndian(bytes_, referenceSize_, 1);
    appendBigEndian(bytes_, offsets_.size(), 8);
    appendBigEndian(bytes_, 0, 8);
    appendBigEndian(bytes_, table, 8);
    return std::move(bytes_);
  }

 private:
  static std::uint64_t count(const PropertyList& value) {
    std::uint64_t total = 1;
    if (value.array()) {
      for (const PropertyList& element : *value.array()) total += count(element);
    } else if (value.dictionary()) {
      for (const auto& [key, element] : *value.dictionary()) total += 1 + count(element);
    }
    return total;
  }

  void appendMarker(unsigned kind, std::uint64_t length) {
    bytes_ += static_cast<char>(kind << 4 | std::min<std::uint64_t>(length, 0x0F));
    if (length >= 0x0F) appendInteger(length);
  }

  void appendInteger(std::uint64_t value) {
    const unsigned size = bytesFor(value);
    bytes_ += static_cast<char>(0x10 | std::countr_zero(size));
    appendBigEndian(bytes_, value, size);
  }

  void appendText(const std::string& raw) {
    const bool ascii = std::all_of(raw.begin(), raw.end(), [](char c) { return (c & 0x80) == 0; });
    if (ascii) {
      appendMarker(0x5, raw.size());
      bytes_ += raw;
      return;
    }
    const std::string units = toUTF16(repairedUTF8(raw));
    appendMarker(0x6, units.size() / 2);
    bytes_ += units;
  }

  std::uint64_t newObject() {
    offsets_.push_back(bytes_.size());
    return offsets_.size() - 1;
  }

  /// Adds a value and what it holds; gives its number. A collection comes before its elements,
  /// their references filled in afterwards.
  std::uint64_t add(const PropertyList& value) {
    const std::uint64_t number = newObject();
    if (value.boolean()) {
      bytes_ += *value.boolean() ? '\x09' : '\x08';
    } else if (value.integer()) {
      appendInteger(static_cast<std::uint64_t>(*value.integer()));
    } else if (value.real()) {
      bytes_ += '\x23';
      appendBigEndian(bytes_, std::bit_cast<std::uint64_t>(*value.real()), 8);
    } else if (value.date()) {
      bytes_ += '\x33';
      appendBigEndian(bytes_, std::bit_cast<std::uint64_t>(referenceSeconds(*value.date())), 8);
    } else if (value.data()) {
      appendMarker(0x4, value.data()->bytes.size());
      bytes_ += value.data()->bytes;
    } else if (value.string()) {
      appendText(*value.string());
    } else if (value.foreign()) {
      bytes_ += value.foreign()->object;
    } else if (value.array()) {
      addArray(*value.array());
    } else if (value.dictionary()) {
      addDictionary(*value.dictionary());
    } else {
      bytes_ += '\0';
    }
    return number;
  }

  std::size_t reserveReferences(std::size_t count) {
    const std::size_t start = bytes_.size();
    bytes_.append(count * referenceSize_, '\0');
    return start;
  }

  void fill(std::size_t start, std::size_t index, std::uint64_t reference) {
    std::string field;
    appendBigEndian(field, reference, referenceSize_);
    bytes_.replace(start + index * referenceSize_, referenceSize_, field);
  }

  void addArray(const PropertyList::Array& array) {
    const auto nils = std::count_if(array.begin(), array.end(),
                                    [](const PropertyList& element) { return element.isNil(); });
    const std::size_t count = array.size() - static_cast<std::size_t>(nils);
    appendMarker(0xA, count);
    const std::size_t start = reserveReferences(count);
    std::size_t index = 0;
    for (const PropertyList& element : array) {
      if (!element.isNil()) fill(start, index++, add(element));
    }
  }

  void addDictionary(const PropertyList::Dictionary& dictionary) {
    const auto nils = std::count_if(dictionary.begin(), dictionary.end(),
                                    [](const auto& entry) { return entry.second.isNil(); });
    const std::size_t count = dictionary.size() - static_cast<std::size_t>(nils);
    appendMarker(0xD, count);
    const std::size_t start = reserveReferences(2 * count);
    std::size_t index = 0;
    for (const auto& [key, element] : dictionary) {
      if (element.isNil()) continue;
      const std::uint64_t keyNumber = newObject();
      appendText(key);
      fill(start, index, keyNumber);
      fill(start, count + index, add(element));
      ++index;
    }
  }

  std::string bytes_;
  std::vector<std::uint64_t> offsets_;
  unsigned referenceSize_ = 1;
};

}  // namespace

std::string binaryPropertyList(const PropertyList& value) { return Writer().write(value); }

}  // namespace annivo
