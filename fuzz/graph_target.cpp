// Graph documents: reading, the dump, and the way to the output without any rule.
#include "data/pool.hpp"
#include "run/render.hpp"
#include "support.hpp"
#include "support/session.hpp"

namespace {

using lexon::test::session;

using namespace lexon;

constexpr std::string_view kEntries =
    "[see]{1} \"see(>do)\" (V,TEMP) <E,1,2>;\n"
    "[look]{2} \"see(>do)\" (V) <E,1,1>;\n"
    "[dog]{3} \"dog\" (N,@9) <E,0,0>;\n"
    "[big]{4} \"big\" (ADJ) <E,0,0>;\n"
    "[]{5} \"cat\" () <E,0,0>;\n";

constexpr int kMostSentences = 64;

Status sentence_read(std::FILE* document, fuzz::Dictionary& dictionary) {
  std::array<char, kSentenceSize> text;
  lookups_attend(session, dictionary.files(), {});
  const Status status = render_sentence(session, dictionary.files(), document, text.data(), {}, true);
  session.pool.release_all();
  return status;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::Dictionary dictionary("graph");
  fuzz::fresh_start();
  dictionary.use(kEntries);
  session.state.trace_level = 1;
  const fuzz::Source document(fuzz::bytes_of(data, size));
  for (int i = 0; i < kMostSentences; ++i) {
    if (sentence_read(document.get(), dictionary) == Status::end_of_input) break;
  }
  return 0;
}
