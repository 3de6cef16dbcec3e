#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace kolmera {

/// What a state was before each of its changes, to take them back one by one, and to do them again until there is
/// another change. Changes of the same kind in a row are one step, as the letters typed into a field are; those of kind
/// 0 are steps of their own.
template <typename State>
class UndoHistory {
  public:
    void changed(State before, int kind) {
        undone_.clear();
        if (kind == 0 || kind != lastKind_) done_.push_back(std::move(before));
        lastKind_ = kind;
    }

    [[nodiscard]] bool canUndo() const { return !done_.empty(); }
    [[nodiscard]] bool canRedo() const { return !undone_.empty(); }
    /// What the state becomes that is `now`; nothing where there is no step.
    std::optional<State> undo(State now) { return move(done_, undone_, std::move(now)); }
    std::optional<State> redo(State now) { return move(undone_, done_, std::move(now)); }

  private:
    std::optional<State> move(std::vector<State>& from, std::vector<State>& to, State now) {
        if (from.empty()) return std::nullopt;
        to.push_back(std::move(now));
        State state = std::move(from.back());
        from.pop_back();
        lastKind_ = 0;
        return state;
    }

    std::vector<State> done_, undone_;
    int lastKind_ = 0;
};

}  // namespace kolmera
