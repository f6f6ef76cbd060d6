// Keeping a candidate alive across calls that can undo the application it belongs to.
#pragma once

#include "data/nodes.hpp"
#include "data/records.hpp"

namespace lexon {

// While it lives, the elements of the candidate's list outlive the loops that pass over them, as if a record pointed to
// one of them. The candidate may be null.
class CandidatePin {
 public:
  explicit CandidatePin(const RuleCandidate* candidate) : list_(candidate == nullptr ? nullptr : candidate->list) {
    if (list_ != nullptr) ++list_->records;
  }
  ~CandidatePin() {
    if (list_ != nullptr) --list_->records;
  }
  CandidatePin(const CandidatePin&) = delete;
  CandidatePin& operator=(const CandidatePin&) = delete;

 private:
  CandidateList* list_;
};

// While it lives, the present candidate is pinned; an undoing inside may put another one, or none, in its place. At its
// end, what the search has left behind goes back to the pool.
class CandidateHandover {
 public:
  CandidateHandover(Session& session, RuleCandidate*& candidate)
      : session_(session), before_(candidate), now_(candidate) {
    if (before_ != nullptr) ++before_->list->records;
  }
  ~CandidateHandover() {
    if (before_ == nullptr) return;
    --before_->list->records;
    candidates_left_behind(session_, before_, now_);
  }
  CandidateHandover(const CandidateHandover&) = delete;
  CandidateHandover& operator=(const CandidateHandover&) = delete;

 private:
  Session& session_;
  RuleCandidate* before_;
  RuleCandidate*& now_;
};

}  // namespace lexon
