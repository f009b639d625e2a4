#include "cw/LoopInput.h"

#include <utility>

#include "cw/Handle.h"

namespace CW {

LoopInput::LoopInput() {
  SULoopInputCreate(&su_loop_input_);
}

LoopInput::LoopInput(LoopInput&& other) noexcept {
  *this = std::move(other);
}

LoopInput& LoopInput::operator=(LoopInput&& other) noexcept {
  std::swap(su_loop_input_, other.su_loop_input_);
  std::swap(vertex_count_, other.vertex_count_);
  return *this;
}

LoopInput::~LoopInput() {
  if (!is_null()) SULoopInputRelease(&su_loop_input_);
}

void LoopInput::add_vertex_index(size_t vertex_index) {
  require_valid(is_null(), "LoopInput", "add_vertex_index");
  if (SULoopInputAddVertexIndex(su_loop_input_, vertex_index) == SU_ERROR_NONE) ++vertex_count_;
}

void LoopInput::require_edge(const char* operation, size_t edge_index) const {
  require_valid(is_null(), "LoopInput", operation);
  if (edge_index >= vertex_count_) {
    throw std::invalid_argument(
        std::string("CW::LoopInput::") + operation +
        "(): edge_index is larger than the number of vertices in the LoopInput");
  }
}

void LoopInput::set_edge_hidden(size_t edge_index, bool hidden) {
  require_edge("set_edge_hidden", edge_index);
  SULoopInputEdgeSetHidden(su_loop_input_, edge_index, hidden);
}

void LoopInput::set_edge_soft(size_t edge_index, bool soft) {
  require_edge("set_edge_soft", edge_index);
  SULoopInputEdgeSetSoft(su_loop_input_, edge_index, soft);
}

void LoopInput::set_edge_smooth(size_t edge_index, bool smooth) {
  require_edge("set_edge_smooth", edge_index);
  SULoopInputEdgeSetSmooth(su_loop_input_, edge_index, smooth);
}

}  // namespace CW
