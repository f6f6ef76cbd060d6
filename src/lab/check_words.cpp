#include "lab/check_words.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

#include "data/platform.hpp"
#include "data/session.hpp"
#include "data/text_line.hpp"
#include "dict/block_chain.hpp"
#include "dict/dict_record.hpp"
#include "dicttool/entry_reader.hpp"
#include "lab/check_rules.hpp"
#include "lab/commands.hpp"
#include "run/files.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

constexpr std::size_t kSniffed = 4096;

struct Source {
  std::string name;
  File file;
  bool is_built = false;
};

Source open_file(const std::string& path) {
  Source source{path, File(file_open(path, "rb"))};
  if (source.file == nullptr) throw Fault(path + ": cannot be opened: " + std::strerror(errno));
  std::array<char, kSniffed> head;
  const std::size_t size = std::fread(head.data(), 1, head.size(), source.file.get());
  // Entry text holds no NUL, and the header of a dictionary is full of them.
  source.is_built = size != 0 && std::memchr(head.data(), 0, size) != nullptr;
  std::rewind(source.file.get());
  return source;
}

Source open_memory(const CheckText& text) {
  Source source{text.file, unnamed_file()};
  const bool is_written = source.file != nullptr &&
                          std::fwrite(text.text.data(), 1, text.text.size(), source.file.get()) == text.text.size();
  if (!is_written) throw Fault(text.file + ": no room for a temporary file");
  std::rewind(source.file.get());
  return source;
}

Source open_words(const CheckInput& input) {
  return input.entries ? open_memory(*input.entries) : open_file(input.words_file);
}

// One entry: its line, or 0 in a built dictionary, and its bytes as they are stored.
using EntryUse = std::function<void(std::int64_t line, const StoredRecord& record, ByteView bytes)>;

void read_text(const Source& source, const EntryUse& use, std::vector<Finding>& findings) {
  const auto session = std::make_unique<Session>();
  EntryText text(*session, source.file.get(), {kDefaultKeys, max_key_length(kShortNameSize)});
  StoredRecord record;
  while (true) {
    switch (text.next()) {
      case EntryText::Line::entry: {
        const ByteView bytes(text.record());
        if (stored_record_read(bytes, record)) use(text.line_number(), record, bytes);
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

void read_built(const Source& source, const EntryUse& use) {
  const std::int64_t size = file_size(source.file.get());
  const auto block = std::make_unique<DictBlock>();
  StoredRecord record;
  for (std::uint32_t number = kFirstDictBlock; number <= kMaxBlockNumber; ++number) {
    const std::int64_t offset = dict_block_offset(number);
    if (offset + static_cast<std::int64_t>(kDictBlockSize) > size) return;
    if (!block->read(source.file.get(), offset)) throw Fault(source.name + ": cannot be read to its end");
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

void read_entries(const Source& source, const EntryUse& use, std::vector<Finding>& findings) {
  if (source.is_built) return read_built(source, use);
  read_text(source, use, findings);
}

// The pieces of an attribute list.
std::vector<NameId> attributes_of(std::string_view text, Names& names) {
  std::vector<NameId> result;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(','), text.size());
    if (end != 0) result.push_back(names.enter(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::ranges::sort(result);
  return result;
}

// Entries that are alike in everything. Those of a text may stand anywhere, those of a built dictionary stand in the
// order of their forms.
class Duplicates {
 public:
  explicit Duplicates(const Source& source) : source_(source) {}

  void look_at(std::int64_t line, const StoredRecord& record, ByteView bytes, std::vector<Finding>& findings) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!source_.is_built) {
      seen_.emplace_back(std::hash<std::string_view>()(text), line);
      return;
    }
    if (form_ != record.hw) {
      form_ = record.hw;
      of_form_.clear();
    }
    if (of_form_.insert(std::string(text)).second) return;
    findings.push_back({source_.name, 0, 0, 0, Level::warning, "duplicate-entry",
                        "two entries of [" + form_ + "] are alike in everything", "strike one out of the entries"});
  }

  void finish(std::vector<Finding>& findings) {
    std::ranges::sort(seen_);
    for (std::size_t i = 1; i < seen_.size(); ++i) {
      if (seen_[i].first != seen_[i - 1].first) continue;
      std::size_t first = i - 1;
      while (first > 0 && seen_[first - 1].first == seen_[i].first) --first;
      findings.push_back({source_.name, seen_[i].second, 1, 2, Level::warning, "duplicate-entry",
                          "the same entry stands in line " + std::to_string(seen_[first].second),
                          "strike one of the two out"});
    }
  }

 private:
  const Source& source_;
  std::vector<std::pair<std::size_t, std::int64_t>> seen_;
  std::string form_;
  std::unordered_set<std::string> of_form_;
};

}  // namespace

WordSurvey survey_words(const CheckInput& input, const WordQuestions& questions, Names& names,
                        std::vector<Finding>& findings) {
  WordSurvey survey;
  if (!input.entries && input.words_file.empty()) return survey;
  const Source source = open_words(input);
  survey.is_there = true;
  survey.file = source.name;
  std::unordered_map<std::string, std::uint32_t> sets;
  Duplicates duplicates(source);
  std::vector<WordSurvey::Attribute> with_set;  // by set: its entries
  std::string attrs;
  read_entries(
      source,
      [&](std::int64_t line, const StoredRecord& record, ByteView bytes) {
        attrs.assign(record.attrs);
        const auto [set, is_new] = sets.try_emplace(attrs, static_cast<std::uint32_t>(survey.attribute_sets.size()));
        if (is_new) {
          survey.attribute_sets.push_back(attributes_of(attrs, names));
          with_set.push_back({0, line, std::string(record.hw)});
        }
        ++with_set[set->second].count;
        const auto keep = [&](const std::unordered_set<NameId>& wanted, std::string_view key, auto& by_key) {
          const NameId name = names.find(key);
          if (name == kNoName || !wanted.contains(name)) return;
          by_key[name].push_back({std::string(record.hw), std::string(record.cw), set->second});
        };
        keep(questions.forms, record.hw, survey.by_form);
        keep(questions.concepts, record.cw, survey.by_concept);
        duplicates.look_at(line, record, bytes, findings);
      },
      findings);
  duplicates.finish(findings);
  for (std::size_t set = 0; set < with_set.size(); ++set) {
    for (const NameId name : survey.attribute_sets[set]) {
      WordSurvey::Attribute& attribute = survey.attributes[name];
      if (attribute.count == 0) attribute = {0, with_set[set].line, with_set[set].form};
      attribute.count += with_set[set].count;
    }
  }
  return survey;
}

std::unordered_set<NameId> survey_cooccurrence(const CheckInput& input, Names& names, std::vector<Finding>& findings) {
  std::unordered_set<NameId> given;
  if (input.cooccurrence_file.empty()) return given;
  const Source source = open_file(input.cooccurrence_file);
  read_entries(
      source,
      [&](std::int64_t, const StoredRecord& record, ByteView) {
        if (!record.id.empty()) given.insert(names.enter(record.id));
      },
      findings);
  return given;
}

void entry_columns_find(const CheckInput& input, const std::unordered_map<std::size_t, std::string>& needles,
                        std::vector<Finding>& findings) {
  if (needles.empty()) return;
  std::vector<std::pair<std::int64_t, std::size_t>> wanted;
  for (const auto& [index, needle] : needles) wanted.emplace_back(findings[index].line, index);
  std::ranges::sort(wanted);
  const Source source = open_words(input);
  std::vector<char> buffer(kMaxEntryLine + 2);
  TextWatch watch;
  auto next = wanted.begin();
  while (next != wanted.end() &&
         text_line_read(source.file.get(), buffer.data(), static_cast<int>(buffer.size()), &watch)) {
    for (; next != wanted.end() && next->first == watch.line; ++next) {
      Finding& finding = findings[next->second];
      const std::string_view line(buffer.data());
      const std::string& needle = needles.at(next->second);
      // An attribute stands between the last parentheses, so look from the back.
      std::size_t at = line.rfind(needle);
      const auto is_part = [&](std::size_t place) {
        constexpr std::string_view kAround = "(), \t";
        return kAround.find(line[place - 1]) == std::string_view::npos ||
               kAround.find(line[place + needle.size()]) == std::string_view::npos;
      };
      while (at != std::string_view::npos && at > 0 && is_part(at)) at = line.rfind(needle, at - 1);
      if (at == std::string_view::npos) continue;
      Finding placed = finding_at(finding.file, finding.line, line, at, at + needle.size(), finding.level, finding.code,
                                  finding.text, finding.remedy);
      finding = std::move(placed);
    }
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
