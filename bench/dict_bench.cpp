// A dictionary of a million entries: how long it takes to build, and lookups in it beside a prepared SELECT on an
// indexed table of the same data.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "data/chain.hpp"
#include "data/pool.hpp"
#include "dict/dictionary.hpp"
#include "dicttool/build.hpp"
#include "ratios.hpp"
#include "support/session.hpp"

namespace lexon {

using lexon::test::session;
namespace {

namespace fs = std::filesystem;

constexpr int kEntries = 1'000'000;
constexpr int kSurfaceForms = 700'000;
constexpr int kConceptWords = 400'000;

struct Row {
  std::string hw, cw;
  int number;
};

std::string surface_form(unsigned number) {
  std::string word;
  for (unsigned rest = number * 2654435761U; rest != 0; rest /= 19) word += "etaoinshrdlucmfwypv"[rest % 19];
  return word;
}

std::vector<Row> generate() {
  std::mt19937 random(1);
  std::vector<Row> rows;
  for (int i = 0; i < kEntries; ++i) {
    const auto hw = static_cast<unsigned>(random() % kSurfaceForms);
    const auto cw = static_cast<unsigned>(random() % kConceptWords);
    rows.push_back({surface_form(hw), surface_form(cw + 1'000'000) + "(>thing)", i % 256});
  }
  return rows;
}

void write_text(const std::string& path, const std::vector<Row>& rows) {
  std::ofstream text(path, std::ios::binary);
  for (const Row& row : rows) {
    text << '[' << row.hw << "]{} \"" << row.cw << "\" (N,SG,3P,COUNT) <E," << row.number << ',' << row.number
         << ">;\n";
  }
}

bool execute(sqlite3* database, const char* sql) {
  return sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool insert(sqlite3* database, const std::vector<Row>& rows) {
  sqlite3_stmt* statement = nullptr;
  const char* sql = "INSERT INTO words VALUES(?,NULL,?,'N,SG,3P,COUNT',?,?,'E.',NULL,NULL,NULL)";
  bool is_good = sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) == SQLITE_OK;
  for (const Row& row : rows) {
    sqlite3_bind_text(statement, 1, row.hw.data(), static_cast<int>(row.hw.size()), SQLITE_STATIC);
    sqlite3_bind_text(statement, 2, row.cw.data(), static_cast<int>(row.cw.size()), SQLITE_STATIC);
    sqlite3_bind_int(statement, 3, row.number);
    sqlite3_bind_int(statement, 4, row.number);
    is_good = is_good && sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_reset(statement);
  }
  sqlite3_finalize(statement);
  return is_good;
}

bool write_table(const std::string& path, const std::vector<Row>& rows) {
  sqlite3* database = nullptr;
  const bool is_good =
      sqlite3_open(path.c_str(), &database) == SQLITE_OK && execute(database, "PRAGMA synchronous=OFF") &&
      execute(database,
              "CREATE TABLE words(hw TEXT, gloss TEXT, cw TEXT, attrs TEXT, frequency INT, priority INT, "
              "language TEXT, id TEXT, extra1 TEXT, extra2 TEXT)") &&
      execute(database, "BEGIN") && insert(database, rows) && execute(database, "COMMIT") &&
      execute(database, "CREATE INDEX by_hw ON words(hw)") && execute(database, "CREATE INDEX by_cw ON words(cw)");
  sqlite3_close(database);
  return is_good;
}

// The files of one run, and the keys that are asked for.
struct Setting {
  Setting() : folder(fs::temp_directory_path() / "lexon-dict-bench") {
    fs::create_directories(folder);
    const std::vector<Row> rows = generate();
    write_text(path("entries.txt"), rows);
    is_good = build() && write_table(path("words.db"), rows) &&
              dictionary_open(path("words.dic"), PairCheck::quick, dictionary);
    std::mt19937 random(2);
    for (int i = 0; i < 20'000; ++i) asked.push_back(rows[random() % rows.size()]);
  }
  ~Setting() { fs::remove_all(folder); }
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

  [[nodiscard]] std::string path(const char* name) const { return (folder / name).string(); }

  [[nodiscard]] bool build() const {
    BuildFigures figures;
    return dictionary_build(session, {.entries = path("entries.txt"), .dictionary = path("words.dic")}, stderr,
                            figures);
  }

  fs::path folder;
  Dictionary dictionary;
  std::vector<Row> asked;
  bool is_good = false;
};

std::int64_t size_of(const WordEntry& word) {
  return word.hw_len + word.cw_len + word.attr_len + word.priority;
}

void look_up(benchmark::State& run, Setting& setting, int key_field, std::string Row::*key) {
  std::int64_t bytes = 0;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : run) {
    LookupGroup* groups = nullptr;
    const std::string& text = setting.asked[next++ % setting.asked.size()].*key;
    if (dict_lookup(session, setting.dictionary.files(), key_field, text.c_str(), groups) != Status::ok) {
      return run.SkipWithError("a lookup failed");
    }
    for (const LookupGroup& group : chain<&LookupGroup::next>(groups)) {
      for (const WordEntry& word : chain<&WordEntry::next>(group.entries)) bytes += size_of(word);
    }
    session.pool.release_all();
  }
  run.counters["lookups/s"] = benchmark::Counter(static_cast<double>(run.iterations()), benchmark::Counter::kIsRate);
  run.counters["bytes"] = static_cast<double>(bytes) / static_cast<double>(run.iterations());
}

// Reads all columns of a row, as a lookup does.
std::int64_t fetch(sqlite3_stmt* statement) {
  std::int64_t bytes = 0;
  for (const int column : {0, 2, 3}) {
    benchmark::DoNotOptimize(sqlite3_column_text(statement, column));
    bytes += sqlite3_column_bytes(statement, column);
  }
  for (const int column : {1, 6, 7, 8, 9}) benchmark::DoNotOptimize(sqlite3_column_text(statement, column));
  benchmark::DoNotOptimize(sqlite3_column_int(statement, 4));
  return bytes + sqlite3_column_int(statement, 5);
}

// All in one read transaction, so that no statement pays for locks of its own.
void select(benchmark::State& run, const Setting& setting, const char* sql, std::string Row::*key) {
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_open_v2(setting.path("words.db").c_str(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK ||
      !execute(database, "BEGIN") || sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) != SQLITE_OK) {
    return run.SkipWithError("the table cannot be opened");
  }
  std::int64_t bytes = 0;
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : run) {
    const std::string& text = setting.asked[next++ % setting.asked.size()].*key;
    sqlite3_bind_text(statement, 1, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    while (sqlite3_step(statement) == SQLITE_ROW) bytes += fetch(statement);
    sqlite3_reset(statement);
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  run.counters["lookups/s"] = benchmark::Counter(static_cast<double>(run.iterations()), benchmark::Counter::kIsRate);
  run.counters["bytes"] = static_cast<double>(bytes) / static_cast<double>(run.iterations());
}

void register_all(Setting& setting) {
  const auto add = [](const char* name, auto body) {
    benchmark::RegisterBenchmark(name, body)->Iterations(60'000)->Repetitions(5)->Unit(benchmark::kMicrosecond);
  };
  add("lookup_by_hw", [&](benchmark::State& run) { look_up(run, setting, kKeyHw, &Row::hw); });
  add("select_by_hw", [&](benchmark::State& run) { select(run, setting, "SELECT * FROM words WHERE hw=?", &Row::hw); });
  add("lookup_by_cw", [&](benchmark::State& run) { look_up(run, setting, kKeyCw, &Row::cw); });
  add("select_by_cw", [&](benchmark::State& run) { select(run, setting, "SELECT * FROM words WHERE cw=?", &Row::cw); });
  const auto build = [&](benchmark::State& run) {
    for ([[maybe_unused]] auto _ : run) {
      if (!setting.build()) run.SkipWithError("the build failed");
    }
  };
  benchmark::RegisterBenchmark("build_a_million", build)->Iterations(1)->Unit(benchmark::kSecond);
}

}  // namespace
}  // namespace lexon

int main(int argc, char** argv) {
  lexon::Setting setting;
  if (!setting.is_good) return 1;
  lexon::register_all(setting);
  return lexon::bench::run(argc, argv,
                           {{"SELECT by surface form against a lookup", "select_by_hw", "lookup_by_hw", 1.0},
                            {"SELECT by concept word against a lookup", "select_by_cw", "lookup_by_cw", 1.0}});
}
