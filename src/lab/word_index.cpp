#include "lab/word_index.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "data/platform.hpp"
#include "data/session.hpp"
#include "dict/block_chain.hpp"
#include "dict/dict_record.hpp"
#include "dicttool/entry_reader.hpp"
#include "dicttool/terminal_count.hpp"
#include "lab/commands.hpp"
#include "lab/progress.hpp"
#include "lab/text_file.hpp"
#include "run/files.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kMostText =
    0xFFFF0000;                         // bytes; places in it have 32 bits, and an entry is shorter than the rest
constexpr std::size_t kSniffed = 4096;  // bytes that tell entry text from a built dictionary

// Where entries are read from.
struct Source {
  std::string name;  // that findings call it by
  File file;         // at its beginning
  bool is_built = false;
};

// The text in a file without a name, for the readers of entries, which want a file.
Source file_of_text(const std::string& path, std::string_view text) {
  Source source{path, unnamed_file()};
  const bool is_written =
      source.file != nullptr && std::fwrite(text.data(), 1, text.size(), source.file.get()) == text.size();
  if (!is_written) throw Fault(path + ": no room for a temporary file");
  std::rewind(source.file.get());
  return source;
}

Source open_file(const std::string& path) {
  // A pipe cannot be read from its beginning again.
  Source source =
      is_plain_file(path) ? Source{path, File(file_open(path, "rb"))} : file_of_text(path, text_file_read(path));
  if (source.file == nullptr) throw Fault(path + ": cannot be opened: " + std::strerror(errno));
  std::array<char, kSniffed> head;
  const std::size_t size = std::fread(head.data(), 1, head.size(), source.file.get());
  // Entry text holds no NUL, and the header of a dictionary is full of them.
  source.is_built = size != 0 && std::memchr(head.data(), 0, size) != nullptr;
  std::rewind(source.file.get());
  return source;
}

Source open_words(const std::string& path, const Overlay* unsaved) {
  const auto text = unsaved != nullptr ? unsaved->find(path) : nullptr;
  return text == nullptr ? open_file(path) : file_of_text(path, *text);
}

// One entry: its line, or 0 in a built dictionary, and its bytes as they are stored.
using EntryUse = std::function<void(std::int64_t line, const StoredRecord& record, ByteView bytes)>;

// The priority of an entry line, the last of the three numbers behind its attributes, where it does not fit its byte;
// empty otherwise.
std::string_view priority_too_large(std::string_view line) {
  line.remove_prefix(std::min(line.rfind(')'), line.size()));
  // Without the two signs there is no number that could be too large.
  const std::size_t open = line.find('<');
  const std::size_t close = line.find('>', open);
  const std::size_t comma = line.rfind(',', close);
  if (open == std::string_view::npos || close == std::string_view::npos || comma < open) return {};
  std::string_view number = line.substr(comma + 1, close - comma - 1);
  number.remove_prefix(std::min(number.find_first_not_of(" 0"), number.size()));
  number = number.substr(0, number.find_first_not_of("0123456789"));
  return number.size() > 3 || (number.size() == 3 && number > "255") ? number : std::string_view();
}

// Behind the ";" may stand [text]{text}, two fields that Lexon keeps and does not use. Where a concept word or attributes
// follow, it is an entry whose line has lost its beginning.
bool has_second_entry(std::string_view line) {
  for (std::size_t at = line.find(';'); at != std::string_view::npos; at = line.find(';', at + 1)) {
    const std::size_t open = line.find_first_not_of("; \t", at);
    if (open == std::string_view::npos || line[open] != '[') continue;
    const std::size_t id = line.find("]{", open);
    const std::size_t close = line.find('}', std::min(id, line.size()));
    const std::size_t behind = close == std::string_view::npos ? close : line.find_first_not_of(" \t", close + 1);
    if (behind != std::string_view::npos && (line[behind] == '"' || line[behind] == '(')) return true;
  }
  return false;
}

// Lines that are no entries are findings, and the entries behind them are read all the same.
void read_text(const Source& source, const EntryUse& use, std::vector<Finding>& findings, EncodedLines& encoded) {
  const auto session = std::make_unique<Session>();
  EntryText text(*session, source.file.get(), {kDefaultKeys, max_key_length(kShortNameSize)});
  StoredRecord record;
  while (true) {
    const EntryText::Line kind = text.next();
    if (kind == EntryText::Line::entry || kind == EntryText::Line::bad) {
      encoded.look_at(text.line(), text.line_number());
    }
    switch (kind) {
      case EntryText::Line::entry: {
        const ByteView bytes(text.record());
        if (stored_record_read(bytes, record)) use(text.line_number(), record, bytes);
        if (const std::string_view number = priority_too_large(text.line()); !number.empty()) {
          unsigned counts = 0;
          for (const char digit : number) counts = (counts * 10 + static_cast<unsigned>(digit - '0')) % 256;
          findings.push_back({source.name, text.line_number(), 1, 2, Level::error, "priority-wraps",
                              "the priority " + std::string(number) + " counts as " + std::to_string(counts),
                              "use 0 to 255"});
        }
        if (has_second_entry(text.line())) {
          findings.push_back({source.name, text.line_number(), 1, 2, Level::warning, "line-runs-on",
                              "a second entry in this line is not read", "begin a new line in front of it"});
        }
        break;
      }
      case EntryText::Line::bad:
        findings.push_back({source.name, text.line_number(), 1, 2, Level::error, "entry-syntax", text.reason(),
                            "an entry is [form]{id} \"concept\" (ATTRIBUTES) <language,frequency,priority>;"});
        break;
      case EntryText::Line::end: return;
      case EntryText::Line::unreadable: throw Fault(source.name + ": cannot be read to its end");
      case EntryText::Line::no_memory: throw std::bad_alloc();
    }
  }
}

// A built dictionary is read block by block, and not by its index, which may be missing.
void read_built(const Source& source, const EntryUse& use) {
  const std::int64_t size = file_size(source.file.get());
  const auto block = std::make_unique<DictBlock>();
  StoredRecord record;
  for (std::uint32_t number = kFirstDictBlock; number <= kMaxBlockNumber; ++number) {
    const std::int64_t offset = dict_block_offset(number);
    if (offset + static_cast<std::int64_t>(kDictBlockSize) > size) return;
    if (!block->read(source.file.get(), offset)) throw Fault(source.name + ": cannot be read to its end");
    // Key blocks repeat what records say.
    if (block->bytes()[kDictTypeOffset] != kDataBlock) continue;
    ByteView bytes;
    for (std::size_t at = kDictDataOffset; at < block->content().size(); at += bytes.size()) {
      bytes = record_at(block->content(), at);
      if (bytes.empty() || !stored_record_read(bytes, record)) {
        throw Fault(source.name + ": is damaged: lexon-dict check says where");
      }
      use(0, record, bytes);
    }
  }
}

// Entries that are alike in everything. Those of a text may stand anywhere, those of a built dictionary stand in the
// order of their forms.
class Duplicates {
 public:
  explicit Duplicates(const Source& source) : source_(source) {}

  void look_at(std::int64_t line, const StoredRecord& record, ByteView bytes, std::vector<Finding>& findings) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!source_.is_built) {
      // Sixteen bytes an entry; what is alike is found by sorting when all are read.
      seen_.emplace_back(std::hash<std::string_view>()(text), line);
      return;
    }
    // Only the entries of one form are kept at a time.
    if (form_ != record.hw) {
      form_ = record.hw;
      of_form_.clear();
    }
    if (of_form_.insert(std::string(text)).second) return;
    findings.push_back({source_.name, 0, 0, 0, Level::warning, "duplicate-entry",
                        "two entries of [" + form_ + "] are alike in everything", "strike one out of the entries"});
  }

  // Tells those of a text, and returns its entries by their hashes.
  std::vector<std::pair<std::size_t, std::int64_t>> finish(std::vector<Finding>& findings) {
    // Alike entries stand together then, in the order of their lines.
    std::ranges::sort(seen_);
    std::size_t first = 0;  // of those that are alike
    for (std::size_t i = 1; i < seen_.size(); ++i) {
      if (seen_[i].first != seen_[first].first) {
        first = i;
        continue;
      }
      findings.push_back({source_.name, seen_[i].second, 1, 2, Level::warning, "duplicate-entry",
                          "the same entry stands in line " + std::to_string(seen_[first].second),
                          "strike one of the two out"});
      findings.back().fix.kind = Fix::Kind::strike_line;
    }
    return std::move(seen_);
  }

 private:
  const Source& source_;
  std::vector<std::pair<std::size_t, std::int64_t>> seen_;  // of a text: hash of an entry, and its line
  std::string form_;                                        // of a built dictionary: the one that comes by,
  std::unordered_set<std::string> of_form_;                 // and its entries so far
};

// Forms of a word whose attributes do not tell them apart: so few are slips, and so many times more words have forms that
// are made alike and told apart.
constexpr std::int64_t kMostTwins = 3;
constexpr std::int64_t kChangesForOne = 10;
constexpr std::size_t kMostForms = 12;

// How one form becomes another, as "-y+ies": what is cut off its end, and what is put there.
std::string change_of(std::string_view from, std::string_view to) {
  const auto same = static_cast<std::size_t>(std::ranges::mismatch(from, to).in1 - from.begin());
  return '-' + std::string(from.substr(same)) + '+' + std::string(to.substr(same));
}

// The upper half of a key of `by_form_` and the like; the lower one is the number of the entry.
std::uint64_t key_of(std::string_view text) {
  return static_cast<std::uint64_t>(std::hash<std::string_view>()(text)) >> 32 << 32;
}

}  // namespace

WordIndex::WordIndex(const std::string& path, const Overlay* unsaved) : path_(path) {
  const Source source = open_words(path, unsaved);
  std::unordered_map<std::string, std::uint32_t> sets;
  Duplicates duplicates(source);
  std::string attrs;
  TerminalCount shown(stderr, "entries read");
  const EntryUse use = [&](std::int64_t line, const StoredRecord& record, ByteView bytes) {
    interrupt_check();
    shown.count();
    // Reused: a million entries would else be as many texts.
    attrs.assign(record.attrs);
    const auto [set, is_new] = sets.try_emplace(attrs, static_cast<std::uint32_t>(sets_.size()));
    if (is_new) sets_.push_back({attrs, 0, static_cast<std::uint32_t>(entries_.size())});
    // A million entries have a few hundred sets of attributes.
    ++sets_[set->second].count;
    if (texts_.size() > kMostText) throw Fault(path + ": has more than 4 GB of words, which a check cannot hold");
    entries_.push_back({static_cast<std::uint32_t>(texts_.size()), set->second, static_cast<std::uint32_t>(line)});
    for (const std::string_view field :
         {std::string_view(record.hw), std::string_view(record.cw), std::string_view(record.id)}) {
      (texts_ += field) += '\0';
    }
    duplicates.look_at(line, record, bytes, findings_);
    if (record.cw.empty() && !record.gloss.empty()) look_at_gloss(line, record.gloss);
  };
  if (source.is_built) {
    read_built(source, use);
  } else {
    read_text(source, use, findings_, encoded_);
  }
  lines_by_hash_ = duplicates.finish(findings_);
  sort_keys();
  look_for_twins();
}

// The sign of a restriction, as in very(>degree), stands in concept words alone.
void WordIndex::look_at_gloss(std::int64_t line, std::string_view gloss) {
  if (line == 0 || gloss.find(' ') != std::string_view::npos) return;
  glosses_.try_emplace(std::string(gloss), line);
  const bool is_concept = gloss.find("(>") != std::string_view::npos || gloss.find("(<") != std::string_view::npos;
  if (!is_concept) return;
  findings_.push_back({path_, line, 1, 2, Level::warning, "concept-unquoted",
                       std::string(gloss) + " is read as the gloss, and the entry has no concept word",
                       "write the concept word in quotes: [form]{id} \"concept\" (ATTRIBUTES)"});
}

// Sorted arrays of numbers take a third of what hash tables would, and are made faster.
void WordIndex::sort_keys() {
  by_form_.reserve(entries_.size());
  by_concept_.reserve(entries_.size());
  by_id_.reserve(std::ranges::count_if(entries_, [this](const Entry& entry) { return !id(entry).empty(); }));
  for (std::uint32_t i = 0; i < entries_.size(); ++i) {
    by_form_.push_back(key_of(form(entries_[i])) | i);
    by_concept_.push_back(key_of(concept_word(entries_[i])) | i);
    if (!id(entries_[i]).empty()) by_id_.push_back(key_of(id(entries_[i])) | i);
  }
  std::ranges::sort(by_form_);
  std::ranges::sort(by_concept_);
  std::ranges::sort(by_id_);
}

std::vector<std::uint32_t> WordIndex::find(const std::vector<std::uint64_t>& by_key, int number,
                                           std::string_view key) const {
  // Half a hash is shared by some, so the text decides.
  std::vector<std::uint32_t> found;
  const std::uint64_t wanted = key_of(key);
  for (auto at = std::ranges::lower_bound(by_key, wanted); at != by_key.end() && *at >> 32 == wanted >> 32; ++at) {
    const auto entry = static_cast<std::uint32_t>(*at);
    if (field(entries_[entry], number) == key) found.push_back(entry);
  }
  return found;
}

template <typename Use>
void WordIndex::for_each_two_forms(const Use& use) const {
  std::vector<const Entry*> group;
  for (std::size_t begin = 0, end = 0; begin < by_concept_.size(); begin = end) {
    while (end < by_concept_.size() && by_concept_[end] >> 32 == by_concept_[begin] >> 32) ++end;
    // A word has some ten forms; concept words with more are those of function words, which are no forms of another.
    if (end - begin == 1 || end - begin > kMostForms) continue;
    interrupt_check();
    group.clear();
    for (std::size_t i = begin; i < end; ++i) group.push_back(&entries_[static_cast<std::uint32_t>(by_concept_[i])]);
    for (const Entry* from : group) {
      for (const Entry* to : group) {
        // Half a hash is shared by some, so the text decides.
        const bool is_same_word = !concept_word(*from).empty() && concept_word(*from) == concept_word(*to);
        if (is_same_word && form(*from) != form(*to)) use(*from, *to);
      }
    }
  }
}

// Two forms of a concept word with the same attributes, of which one should have had others: as "dog" becomes "dogs",
// many words become another that has PL besides. Variants of spelling change otherwise, or not always so.
void WordIndex::look_for_twins() {
  struct Change {
    std::int64_t twins = 0;                         // pairs of forms with the same attributes
    std::map<std::uint32_t, std::int64_t> becomes;  // pairs with others, by the attribute set of the second
  };
  // By the attribute set of the first form, and what becomes of it.
  std::map<std::pair<std::uint32_t, std::string>, Change> changes;
  for_each_two_forms([&](const Entry& from, const Entry& to) {
    Change& change = changes[{from.set, change_of(form(from), form(to))}];
    if (from.set == to.set) {
      ++change.twins;
    } else {
      ++change.becomes[to.set];
    }
  });
  for_each_two_forms([&](const Entry& from, const Entry& to) {
    if (from.set != to.set) return;
    const Change& change = changes.at({from.set, change_of(form(from), form(to))});
    if (change.becomes.empty()) return;
    const auto meant = std::ranges::max_element(change.becomes, {}, [](const auto& each) { return each.second; });
    if (change.twins > kMostTwins || meant->second < change.twins * kChangesForOne) return;
    const bool has_line = to.line != 0;  // a built dictionary has none
    findings_.push_back(
        {path_, to.line, has_line ? std::size_t{1} : 0, has_line ? std::size_t{2} : 0, Level::warning, "entry-twin",
         '[' + std::string(form(to)) + "] has the concept word and the attributes of [" + std::string(form(from)) +
             ']' + (has_line ? " in line " + std::to_string(from.line) : std::string()) +
             ", so that rules cannot choose between them",
         "did you mean (" + sets_[meant->first].attributes + "), as " + std::to_string(meant->second) +
             " forms that are made alike have it?"});
  });
}

std::shared_ptr<const WordIndex> CheckCache::words(const std::string& path, const Overlay* unsaved) {
  const TextMark mark = text_mark(path, unsaved);
  Known& known = known_[path];
  // A question is a use, whether the index is read anew or not.
  known.is_used = true;
  if (known.index == nullptr || known.mark != mark) {
    known.index = nullptr;  // two large ones need not be in memory at once
    known.index = std::make_shared<const WordIndex>(path, unsaved);
    known.mark = mark;
  }
  return known.index;
}

// Called after each check: what was not asked for since the call before goes.
void CheckCache::forget_unused() {
  std::erase_if(known_, [](const auto& each) { return !each.second.is_used; });
  for (auto& [path, known] : known_) known.is_used = false;
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
