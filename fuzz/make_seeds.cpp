// Makes the seeds of all targets from the golden cases and the examples, so that they stand in the tree once:
// make_seeds OUT FOLDER..., each folder with entries.txt, rules.txt and input.txt, and perhaps cr.txt and settings.txt.
#include <algorithm>
#include <filesystem>
#include <string>

#include "blocks.hpp"
#include "dicttool/build.hpp"
#include "matrix_rules.hpp"
#include "rule_text.hpp"
#include "rules/compiled.hpp"
#include "rules/matrix.hpp"
#include "support.hpp"
#include "support/grammar.hpp"

namespace {

using lexon::test::grammar;
using lexon::test::index_build;
using lexon::test::session;

using namespace lexon;
namespace fs = std::filesystem;

std::string text_at(const fs::path& path) {
  return fs::exists(path) ? fuzz::file_read(path.string()) : std::string();
}

class Seeds {
 public:
  explicit Seeds(fs::path out) : out_(std::move(out)) {}

  void add(const std::string& target, const std::string& name, const std::string& bytes) const {
    fs::create_directories(out_ / target);
    fuzz::file_write((out_ / target / name).string(), bytes);
  }

 private:
  fs::path out_;
};

std::string settings_letters(const std::string& settings) {
  const std::size_t level = settings.find("-L");
  std::string letters = level == std::string::npos ? "0" : settings.substr(level + 2, 1);
  if (settings.find("^P") != std::string::npos) letters += 'P';
  return letters;
}

// The binary files of the first lines of an entry text, with some of its keys.
std::string dictionary_parts(const std::string& entries) {
  BuildOptions options;
  options.entries = fuzz::folder_path("words.txt");
  options.dictionary = fuzz::folder_path("words.dic");
  options.skip_bad = true;
  options.key_fields = 0xEE;
  fuzz::file_write(options.entries, entries);
  BuildFigures figures;
  fuzz::require(dictionary_build(session, options, fuzz::nowhere(), figures), "a dictionary is built");
  std::vector<std::string> keys = {"", "zzz"};
  for (const char mark : {'[', '"'}) {
    const std::size_t begin = entries.find(mark) + 1;
    const std::size_t end = entries.find_first_of("]\"", begin);
    if (begin != 0 && end != std::string::npos) keys.push_back(entries.substr(begin, end - begin));
  }
  return fuzz::parts_of(fuzz::file_read(options.dictionary), fuzz::file_read(figures.index), keys);
}

// The first whole lines of a text.
std::string beginning_of(const std::string& text, std::size_t length) {
  if (text.size() <= length) return text;
  return text.substr(0, text.rfind('\n', length) + 1);
}

void make_from_folder(const Seeds& seeds, const fs::path& folder) {
  constexpr std::size_t kSome = 2000;
  const std::string name = folder.filename().string();
  const std::string entries = text_at(folder / "entries.txt");
  const std::string rules = text_at(folder / "rules.txt");
  const std::string input = text_at(folder / "input.txt");
  const std::string pairs = text_at(folder / "cr.txt");
  seeds.add("graph", name, input);
  seeds.add("rules", name, beginning_of(rules, kSome * 2));
  seeds.add("entries", name, beginning_of(entries, kSome));
  if (!pairs.empty()) seeds.add("entries", name + "-cr", beginning_of(pairs, kSome));
  seeds.add("dictionary", name, dictionary_parts(beginning_of(entries, kSome)));
  const std::string settings = settings_letters(text_at(folder / "settings.txt"));
  seeds.add("run", name, settings + "\n%%\n" + entries + "%%\n" + rules + "%%\n" + input + "%%\n" + pairs);
  fuzz::fresh_start();
  const Rule* parsed = fuzz::rules_parsed(beginning_of(rules, kSome)).rules;
  seeds.add("compiled", name, fuzz::rules_compiled(parsed));
}

void make_matrices(const Seeds& seeds) {
  for (unsigned number = 0; number < fuzz::kMatrixRuleLists; ++number) {
    fuzz::fresh_start();
    Rule* rules = fuzz::rules_parsed(fuzz::matrix_rules(number)).rules;
    const fuzz::Sink matrix;
    const bool made =
        index_build(rules) == Status::ok && rule_matrix_save(session, grammar.index, matrix.get()) == Status::ok;
    fuzz::require(made, "a matrix can be made and saved");
    seeds.add("matrix", "list-" + std::to_string(number), static_cast<char>(number) + matrix.text());
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const Seeds seeds(argv[1]);
  for (int i = 2; i < argc; ++i) make_from_folder(seeds, argv[i]);
  make_matrices(seeds);
  return 0;
}
