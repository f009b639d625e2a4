#pragma once

#include <SketchUpAPI/sketchup.h>

namespace CW {

// A loop under construction: indexes of a builder's vertices, and flags of the edges between them.
// Released with the wrapper unless a face has taken it over.
class LoopInput {
 public:
  LoopInput();
  LoopInput(const LoopInput&) = delete;
  LoopInput(LoopInput&& other) noexcept;
  LoopInput& operator=(const LoopInput&) = delete;
  LoopInput& operator=(LoopInput&& other) noexcept;
  ~LoopInput();

  bool is_null() const { return SUIsInvalid(su_loop_input_); }
  SULoopInputRef ref() const { return su_loop_input_; }
  // For calls that take the loop over and make the handle invalid.
  SULoopInputRef* out() { return &su_loop_input_; }

  void add_vertex_index(size_t vertex_index);
  // Edge i leads from the loop's vertex i to the next. An index beyond the last vertex throws
  // std::invalid_argument.
  void set_edge_hidden(size_t edge_index, bool hidden);
  void set_edge_soft(size_t edge_index, bool soft);
  void set_edge_smooth(size_t edge_index, bool smooth);

 private:
  void require_edge(const char* operation, size_t edge_index) const;

  SULoopInputRef su_loop_input_ = SU_INVALID;
  size_t vertex_count_ = 0;
};

}  // namespace CW
