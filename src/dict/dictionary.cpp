#include "dict/dictionary.hpp"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "dict/block_chain.hpp"
#include "dict/pair_stamp.hpp"

namespace lexon {

namespace {

// How long a build that is replacing the files is waited for: one second in all.
constexpr int kMostTries = 40;
constexpr std::chrono::milliseconds kBetweenTries{25};

// Reads a slot of the header, unless it is empty.
void slot_read(ByteView header, int key_field, Dictionary& dictionary) {
  const std::size_t at = slot_offset(dictionary.name_size, key_field);
  // The first character decides, as padding never stands in front.
  const bool is_empty = header[at] == ' ' || header[at] == '\0';
  if (is_empty) return;
  const auto field = static_cast<std::size_t>(key_field);
  IndexDescriptor& descriptor = dictionary.descriptors[field];
  dictionary.slots[field] = &descriptor;
  ByteReader reader(header, at);
  // The name ends at its padding, which is of NULs or of spaces.
  std::string_view name = reader.text(dictionary.name_size);
  name = name.substr(0, name.find('\0'));
  name = name.substr(0, name.find_last_not_of(' ') + 1);
  descriptor = {};
  name.copy(descriptor.name, kLongNameSize);
  descriptor.unread = reader.u8();
  descriptor.levels = static_cast<std::int8_t>(reader.u8());
  descriptor.number1 = reader.u16();
  descriptor.root = reader.u16();
  descriptor.number2 = reader.u32();
}

// `regular_file_open` gives the code for a wrong argument for what is no file: a folder, a device.
const char* open_failure_text(int error) {
  return error == EINVAL ? "it is no regular file" : std::strerror(error);
}

// Opens the index that the slot of the surface form names; lookups by other fields go through it too. On failure `fault`
// says why.
bool index_file_open(Dictionary& dictionary) {
  const IndexDescriptor* slot = dictionary.slots[kKeyHw];
  if (slot == nullptr || slot->levels < 1) {
    dictionary.fault = dictionary.path + ": offset " + std::to_string(kHeaderSlotsOffset) +
                       ": not a dictionary: its first slot names no index with a tree";
    return false;
  }
  const std::string prefix = folder_prefix(dictionary.path);
  dictionary.index_path = prefix + slot->name;
  dictionary.index.reset(index_open(prefix, *slot, kKeyHw, true));
  if (dictionary.index != nullptr) return true;
  const char* reason = is_bare_name(slot->name) ? open_failure_text(errno) : "it is not a plain file name";
  dictionary.fault = dictionary.path + ": its index " + dictionary.index_path + " cannot be opened: " + reason;
  return false;
}

}  // namespace

std::string folder_prefix(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

bool dictionary_file_open(const std::string& path, Dictionary& dictionary) {
  dictionary.path = path;
  dictionary.index_path.clear();
  dictionary.fault.clear();
  dictionary.slots = {};
  dictionary.name_size = 0;
  dictionary.index.reset();
  dictionary.dictionary.reset(regular_file_open(path, "rb"));
  if (dictionary.dictionary == nullptr) {
    dictionary.fault = path + ": cannot be opened: " + open_failure_text(errno);
    return false;
  }
  dictionary_header_read(dictionary);
  return true;
}

// All slots at once: which of them a run asks for is not known yet.
void dictionary_header_read(Dictionary& dictionary) {
  DictBlock header;
  if (!header.read(dictionary.dictionary.get(), 0)) {
    dictionary.fault = dictionary.path + ": offset 0: not a dictionary: the file is shorter than its header";
    return;
  }
  dictionary.name_size = name_size_of(ByteReader(header.bytes(), kHeaderSlotsOffset).text(kLongNameSize));
  for (int field = kKeyHw; field <= kSlotCount; ++field) slot_read(header.bytes(), field, dictionary);
}

bool dictionary_open(const std::string& path, PairCheck check, Dictionary& dictionary) {
  for (int tries = 0;; ++tries) {
    if (!dictionary_file_open(path, dictionary) || dictionary.name_size == 0) return false;
    if (!index_file_open(dictionary)) return false;
    const Pairing pairing = check == PairCheck::none ? Pairing::belong : pair_check(dictionary, check);
    if (pairing == Pairing::belong) return true;
    dictionary.index.reset();
    // One of the two may have been opened before a build replaced it and the other one behind that: look once more.
    const bool may_change = pairing == Pairing::changing ? tries < kMostTries : tries == 0;
    if (!may_change) return false;
    if (pairing == Pairing::changing) std::this_thread::sleep_for(kBetweenTries);
  }
}

}  // namespace lexon
