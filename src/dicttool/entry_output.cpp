#include "dicttool/entry_output.hpp"

#include "data/stamp.hpp"
#include "dict/entry_text.hpp"
#include "dicttool/entry_line.hpp"

namespace lexon {

EntryOutput::EntryOutput(Session& session, const EntryForm& form, std::FILE* out)
    : session_(session), form_(form), out_(out) {}

// Puts the parts of the word in the places of {lemma}, {category} and {class}; other braces are text.
void EntryOutput::fill(std::string_view form, const ListedWord& word, std::string& to) const {
  to.clear();
  while (!form.empty()) {
    // A text without a known name in braces is copied, a character a turn.
    const auto take = [&form, &to](std::string_view name, std::string_view value) {
      if (!form.starts_with(name)) return false;
      to += value;
      form.remove_prefix(name.size());
      return true;
    };
    if (take("{lemma}", word.lemma) || take("{category}", word.category)) continue;
    // The first attribute is the class of the word.
    if (take("{class}", word.attributes.substr(0, word.attributes.find(',')))) continue;
    to += form.front();
    form.remove_prefix(1);
  }
}

EntryOutput::Result EntryOutput::write(const ListedWord& word) {
  // A word that brings its concept word along needs no pattern.
  if (word.concept_word.empty()) {
    fill(form_.cw, word, cw_);
  } else {
    cw_ = word.concept_word;
  }
  // The members keep their memory from word to word, since there are millions.
  fill(form_.id, word, id_);
  RecordView record;
  record.hw = word.form;
  record.cw = cw_;
  record.id = id_;
  record.gloss = word.gloss;
  record.attrs = word.attributes;
  record.frequency = word.frequency;
  record.priority = word.priority;
  // Else the mark stays ".", any language.
  if (!form_.language.empty()) record.language[0] = *language_to_mark(form_.language.c_str());
  if (word.attributes.size() > kMaxAttrsLength || !entry_line_write(session_, record, line_)) return Result::impossible;
  // Lists name many forms twice. Lines are known by their hashes, which is all that is kept of millions.
  ByteHash hash;
  hash.add(line_.data(), line_.size());
  if (!lines_.insert(hash.value()).second) {
    ++known_;
    return Result::known;
  }
  ++written_;
  std::fwrite(line_.data(), 1, line_.size(), out_);
  return Result::written;
}

}  // namespace lexon
