#include "lab/check_words.hpp"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "data/text_line.hpp"
#include "dicttool/entry_reader.hpp"
#include "lab/check_rules.hpp"
#include "lab/text_file.hpp"
#include "lab/word_index.hpp"

namespace lexon {
inline namespace v1 {
namespace lab {

namespace {

// The names of an attribute list ("N,PL"), in ascending order of their numbers.
std::vector<NameId> attributes_of(std::string_view text, Names& names) {
  std::vector<NameId> result;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(','), text.size());
    // Two commas in a row hold no name.
    if (end != 0) result.push_back(names.enter(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::ranges::sort(result);
  return result;
}

// An index that is read for this check alone, or kept for the next.
std::shared_ptr<const WordIndex> index_of(const CheckInput& input, const std::string& path) {
  if (input.cache != nullptr) return input.cache->words(path, input.unsaved);
  return std::make_shared<const WordIndex>(path, input.unsaved);
}

// Appends the entries that somebody asks for: `find` gives their numbers in the index, and `first_set` is where the
// attribute sets of the index stand among those of the survey.
template <typename Find>
void answer(const WordIndex& index, std::uint32_t first_set, const std::unordered_set<NameId>& wanted,
            const Names& names, const Find& find, std::unordered_map<NameId, std::vector<WordFacts>>& by_name) {
  for (const NameId name : wanted) {
    const std::vector<std::uint32_t> found = find(names[name]);
    // A name that nobody has gets no list, which is how it is known to be missing.
    if (found.empty()) continue;
    std::vector<WordFacts>& facts = by_name[name];
    for (const std::uint32_t i : found) {
      const WordIndex::Entry& entry = index.entries()[i];
      facts.push_back({std::string(index.form(entry)), std::string(index.concept_word(entry)), first_set + entry.set});
    }
  }
}

// Entries of a text that stand alike in one of the texts before it, since all of them count as one dictionary. Those that
// stand twice in one text are findings of its own.
void tell_of_repeated(const WordSurvey& survey, const WordIndex& index, std::vector<Finding>& findings) {
  for (const auto& [hash, line] : index.lines_by_hash()) {
    for (const std::shared_ptr<const WordIndex>& earlier : survey.indexes) {
      const auto& lines = earlier->lines_by_hash();
      const auto found = std::ranges::lower_bound(lines, std::pair<std::size_t, std::int64_t>(hash, 0));
      if (found == lines.end() || found->first != hash) continue;
      findings.push_back({index.path(), line, 1, 2, Level::warning, "duplicate-entry",
                          "the same entry stands in " + earlier->path() + ", line " + std::to_string(found->second),
                          "strike one of the two out"});
      findings.back().fix.kind = Fix::Kind::strike_line;
      break;
    }
  }
}

// Looks for the needles of one file; `wanted`: line and number of a finding, in order.
void columns_find(std::string_view text, const std::vector<std::pair<std::int64_t, std::size_t>>& wanted,
                  const std::unordered_map<std::size_t, std::string>& needles, std::vector<Finding>& findings) {
  // As long as an entry may be: longer lines were refused, and no finding lies behind their beginning.
  std::vector<char> buffer(kMaxEntryLine + 2);
  TextWatch watch;
  auto next = wanted.begin();
  // Lines are read as entries are, and only up to the last one that is wanted.
  while (next != wanted.end() && text_line_read(text, buffer.data(), static_cast<int>(buffer.size()), &watch)) {
    for (; next != wanted.end() && next->first == watch.line; ++next) {
      Finding& finding = findings[next->second];
      const std::string_view line(buffer.data());
      const std::string& needle = needles.at(next->second);
      // An attribute stands between the last parentheses, so look from the back.
      std::size_t at = line.rfind(needle);
      // Is it a part of a longer name?
      const auto is_part = [&](std::size_t place) {
        constexpr std::string_view kAround = "(), \t";
        return kAround.find(line[place - 1]) == std::string_view::npos ||
               kAround.find(line[place + needle.size()]) == std::string_view::npos;
      };
      while (at != std::string_view::npos && at > 0 && is_part(at)) at = line.rfind(needle, at - 1);
      // The finding stays about the whole line.
      if (at == std::string_view::npos) continue;
      Finding placed = finding_at(finding.file, finding.line, line, at, at + needle.size(), finding.level, finding.code,
                                  finding.text, finding.remedy);
      placed.fix = std::move(finding.fix);
      finding = std::move(placed);
    }
  }
}

}  // namespace

// Reads the files one after the other; an index stays in memory as long as the survey.
WordSurvey survey_words(const CheckInput& input, const WordQuestions& questions, Names& names,
                        std::vector<Finding>& findings) {
  WordSurvey survey;
  for (const std::string& path : input.words_files) {
    const std::shared_ptr<const WordIndex> index = index_of(input, path);
    const auto file = static_cast<std::uint32_t>(survey.files.size());
    // The files count as one, so their sets and attributes are numbered through.
    survey.files.push_back(path);
    findings.insert(findings.end(), index->findings().begin(), index->findings().end());
    tell_of_repeated(survey, *index, findings);
    survey.indexes.push_back(index);
    const auto first_set = static_cast<std::uint32_t>(survey.attribute_sets.size());
    survey.first_sets.push_back(first_set);
    for (const WordIndex::AttributeSet& set : index->sets()) {
      survey.attribute_sets.push_back(attributes_of(set.attributes, names));
      const WordIndex::Entry& first = index->entries()[set.first];
      for (const NameId name : survey.attribute_sets.back()) {
        WordSurvey::Attribute& attribute = survey.attributes[name];
        // The first entry of the first file that has it.
        if (attribute.count == 0) attribute = {0, file, first.line, std::string(index->form(first))};
        attribute.count += set.count;
      }
    }
    answer(
        *index, first_set, questions.forms, names, [&index](std::string_view form) { return index->with_form(form); },
        survey.by_form);
    answer(
        *index, first_set, questions.concepts, names,
        [&index](std::string_view word) { return index->with_concept(word); }, survey.by_concept);
  }
  return survey;
}

PairSurvey survey_cooccurrence(const CheckInput& input, Names& names, std::vector<Finding>& findings) {
  PairSurvey survey;
  // Without pairs there is nothing to ask for.
  if (input.cooccurrence_file.empty()) return survey;
  survey.index = index_of(input, input.cooccurrence_file);
  findings.insert(findings.end(), survey.index->findings().begin(), survey.index->findings().end());
  // Only superiors and members of classes have an id there.
  for (const WordIndex::Entry& entry : survey.index->entries()) {
    if (!survey.index->id(entry).empty()) survey.given.insert(names.enter(survey.index->id(entry)));
  }
  return survey;
}

void entry_columns_find(const CheckInput& input, const std::unordered_map<std::size_t, std::string>& needles,
                        std::vector<Finding>& findings) {
  std::map<std::string, std::vector<std::pair<std::int64_t, std::size_t>>> by_file;
  for (const auto& [index, needle] : needles) {
    by_file[findings[index].file].emplace_back(findings[index].line, index);
  }
  for (auto& [file, wanted] : by_file) {
    // What came through a pipe is gone, and a pipe with a name would wait for another writer for ever.
    if ((input.unsaved == nullptr || input.unsaved->find(file) == nullptr) && !is_plain_file(file)) continue;
    std::ranges::sort(wanted);
    columns_find(text_file_read(file, input.unsaved), wanted, needles, findings);
  }
}

}  // namespace lab
}  // namespace v1
}  // namespace lexon
