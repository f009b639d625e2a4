// What is changed in a watched model: told to whoever asks, and kept so that it can be undone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "model/Entity.h"

namespace modelhost {

// Every change is kept as an action that takes it back and, called again, makes it anew. What
// leaves a model meanwhile stays alive here; its handle stands for nothing until it comes back.
//
// Not thread-safe: a model is edited on one thread, while nobody reads it.
class Recorder {
 public:
  enum class What : std::uint8_t { Added, Changed, Removed };
  struct Event {
    What what;
    Kind kind;
    void* handle;
    std::int32_t id;
    // Of the entities that it is (or was) among; null for what is among none.
    void* among;
  };
  using Flip = std::function<void()>;
  // Told of what enters a list (true) or leaves it.
  template <class T>
  using Hook = std::function<void(T&, bool)>;
  template <class T>
  using List = std::vector<std::unique_ptr<T>>;

  // To be called before the entity changes; the first time in an operation keeps what it is like.
  void touch(Entity& entity);
  // The same for what nobody needs to be told.
  void keep(Entity& entity);
  void tell(What what, const Entity& entity);
  void add(Flip flip) { open_.push_back(std::move(flip)); }

  // The last item of the list is new.
  template <class T>
  void appended(List<T>& list, Hook<T> hook = {});
  // Takes what doomed(item) says out of the list; it is asked once an item, in order.
  template <class T, class Doomed>
  void take(List<T>& list, Doomed doomed, Hook<T> hook = {});

  // Ends the open operation; `join` makes it part of the one before. False when nothing was
  // changed in it.
  bool commit(bool join);
  // Takes back what the open operation has done so far.
  void abort();
  // False when there is nothing to undo or to do again.
  bool undo();
  bool redo();
  void forget();
  const std::vector<Event>& events() const { return events_; }
  std::vector<Event> drain() { return std::exchange(events_, {}); }

  // While set, changes are neither kept nor told.
  bool paused = false;

 private:
  using Operation = std::vector<Flip>;
  static constexpr std::size_t kMostOperations = 100;

  template <class T>
  struct ListChange;
  friend class Model;
  friend class Instance;

  // Makes an entity, with all that hangs on it, be there or not.
  void setPresent(Entity& entity, bool present);
  void setContentsPresent(Definition& definition, bool present);
  void setPlaced(Instance& instance, bool present);
  void takeBack(Operation& operation);

  Operation open_;
  std::vector<Operation> done_;
  std::vector<Operation> undone_;
  std::vector<Event> events_;
  std::uint32_t serial_ = 1;
};

// Items of a list with their places in it, which are inside the list or kept here.
template <class T>
struct Recorder::ListChange {
  Recorder& recorder;
  List<T>& list;
  Hook<T> hook;
  std::vector<std::pair<std::size_t, std::unique_ptr<T>>> items;

  void note(T& item, bool present) {
    recorder.setPresent(item, present);
    if (hook) hook(item, present);
    recorder.tell(present ? What::Added : What::Removed, item);
  }

  void operator()() {
    if (items.front().second) {
      insert();
    } else {
      extract();
    }
  }

  // From the last to the first, against the order in which insert() puts them back.
  void extract() {
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
      note(*list[item->first], false);
      item->second = std::move(list[item->first]);
    }
    std::size_t to = items.front().first;
    for (std::size_t from = to; from < list.size(); ++from) {
      if (list[from]) list[to++] = std::move(list[from]);
    }
    list.resize(to);
  }

  void insert() {
    std::size_t from = list.size();
    list.resize(from + items.size());
    std::size_t to = list.size();
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
      while (--to != item->first) list[to] = std::move(list[--from]);
      list[to] = std::move(item->second);
    }
    for (const auto& [place, item] : items) note(*list[place], true);
  }
};

template <class T>
void Recorder::appended(List<T>& list, Hook<T> hook) {
  auto change = std::make_shared<ListChange<T>>(*this, list, std::move(hook));
  change->items.emplace_back(list.size() - 1, nullptr);
  add([change] { (*change)(); });
}

template <class T, class Doomed>
void Recorder::take(List<T>& list, Doomed doomed, Hook<T> hook) {
  auto change = std::make_shared<ListChange<T>>(*this, list, std::move(hook));
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (doomed(list[i])) change->items.emplace_back(i, nullptr);
  }
  if (change->items.empty()) return;
  change->extract();
  add([change] { (*change)(); });
}

}  // namespace modelhost
