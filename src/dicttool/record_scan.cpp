#include "dicttool/record_scan.hpp"

#include "data/platform.hpp"
#include "dict/block_chain.hpp"

namespace lexon {

namespace {

// All records of the dictionary file in the order of its blocks, without the index. A damaged record ends its block,
// since nothing says where the next one begins; the next block begins at its own place.
class Scan {
 public:
  Scan(const Dictionary& opened, std::FILE* log, const RecordTaker& take) : opened_(opened), log_(log), take_(take) {}

  bool run() {
    const std::int64_t size = file_size(opened_.dictionary.get());
    DictBlock block;
    for (std::uint32_t number = kFirstDictBlock; number <= kMaxBlockNumber && goes_on_; ++number) {
      const std::int64_t offset = dict_block_offset(number);
      // Only whole blocks; the rest is told below.
      if (offset + static_cast<std::int64_t>(kDictBlockSize) > size) break;
      if (!block.read(opened_.dictionary.get(), offset)) return report(offset, "a block that cannot be read");
      const std::uint8_t type = block.bytes()[kDictTypeOffset];
      if (type == kDataBlock) scan(block, offset);
      // Key blocks repeat what the records say, and are passed over.
      if (type != kDataBlock && type != kKeyBlock) report(offset, "neither records nor keys");
    }
    const std::int64_t rest = size % static_cast<std::int64_t>(kDictBlockSize);
    if (rest != 0 && goes_on_) report(size - rest, "the file ends within a block");
    return is_good_;
  }

 private:
  bool report(std::int64_t offset, const char* what) {
    std::fprintf(log_, "%s: offset %lld: %s\n", opened_.path.c_str(), static_cast<long long>(offset), what);
    return is_good_ = false;
  }

  void scan(const DictBlock& block, std::int64_t block_offset) {
    ByteView record;
    for (std::size_t at = kDictDataOffset; at < block.content().size() && goes_on_; at += record.size()) {
      record = record_at(block.content(), at);
      StoredRecord stored;
      if (!record.empty() && stored_record_read(record, stored)) {
        goes_on_ = take_(record_of(stored), block_offset + static_cast<std::int64_t>(at));
      } else {
        report(block_offset + static_cast<std::int64_t>(at), "a damaged record");
      }
      // A record without a size hides where the next one begins.
      if (record.empty()) break;
    }
  }

  const Dictionary& opened_;
  std::FILE* log_;
  const RecordTaker& take_;
  bool is_good_ = true;
  bool goes_on_ = true;  // the taker wants more
};

}  // namespace

bool records_scan(const Dictionary& opened, std::FILE* log, const RecordTaker& take) {
  return Scan(opened, log, take).run();
}

}  // namespace lexon
