// The public names beside those of the core. Both lie in the namespace of the library, the public ones in an inline
// namespace of their version; inside of that a bare name is a public one, and `core::` leads to the records of the same
// name. No other file includes both.
#pragma once

// All that the library and the workbench use of the core comes first: behind the public names its own would have two
// meanings.
#include "data/chain.hpp"
#include "data/nodes.hpp"
#include "data/platform.hpp"
#include "data/session.hpp"
#include "data/words.hpp"
#include "dict/dictionary.hpp"
#include "dict/entry_text.hpp"
#include "dict/word_lookup.hpp"
#include "engine/observer.hpp"
#include "engine/refusal.hpp"
#include "graph/line_kind.hpp"
#include "rules/compiled.hpp"
#include "rules/grammar.hpp"
#include "rules/parser.hpp"
#include "rules/print.hpp"
#include "run/fallback.hpp"
#include "run/files.hpp"
#include "run/notes.hpp"
#include "run/render.hpp"
#include "run/report.hpp"
#include "run/settings.hpp"
#include "source/expand.hpp"

namespace lexon::core {

using Grammar = lexon::Grammar;
using Status = lexon::Status;

}  // namespace lexon::core

#include <lexon/lexon.hpp>
