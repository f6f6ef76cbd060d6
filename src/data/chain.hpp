// A range over any intrusive list: for (Rule& rule : chain<&Rule::next>(rules)) ...
#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>

namespace lexon {

namespace detail {
template <typename T>
struct MemberPointer;
template <typename Record, typename Field>
struct MemberPointer<Field Record::*> {
  using RecordType = Record;
};
}  // namespace detail

// Walks `head` along the link field `Link`. The link is read when the walk moves on, so a body may change what
// stands behind the current element, but must not release the element itself.
template <auto Link, typename Record = typename detail::MemberPointer<decltype(Link)>::RecordType>
class Chain {
 public:
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Record;
    using difference_type = std::ptrdiff_t;
    using pointer = Record*;
    using reference = Record&;

    explicit Iterator(Record* at) : at_(at) {}
    Record& operator*() const { return *at_; }
    Record* operator->() const { return at_; }
    Iterator& operator++() {
      at_ = at_->*Link;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    Record* at_;
  };

  explicit Chain(Record* head) : head_(head) {}
  [[nodiscard]] Iterator begin() const { return Iterator(head_); }
  [[nodiscard]] Iterator end() const { return Iterator(nullptr); }

 private:
  Record* head_;
};

template <auto Link>
[[nodiscard]] auto chain(typename detail::MemberPointer<decltype(Link)>::RecordType* head) {
  return Chain<Link>(head);
}

template <auto Link>
[[nodiscard]] auto chain(const typename detail::MemberPointer<decltype(Link)>::RecordType* head) {
  using Record = const typename detail::MemberPointer<decltype(Link)>::RecordType;
  return Chain<Link, Record>(head);
}

// Hangs `element` behind the last element of the list at `head`.
template <auto Link>
void chain_append(typename detail::MemberPointer<decltype(Link)>::RecordType*& head,
                  typename detail::MemberPointer<decltype(Link)>::RecordType* element) {
  auto* link = &head;
  while (*link != nullptr) link = &((*link)->*Link);
  *link = element;
}

}  // namespace lexon
