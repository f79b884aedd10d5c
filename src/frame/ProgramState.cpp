#include "frame/ProgramState.h"

namespace {
ProgramState* current = nullptr;

ProgramState& state() {
    if (current)
        return *current;
    static ProgramState standing;   // installs itself as current
    return standing;
}
} // namespace

ProgramState::ProgramState() : previous_(current) { current = this; }

ProgramState::~ProgramState() {
    if (current == this)
        current = previous_;
}

SharedState& sharedState() { return state().shared; }

HandOvers& handOvers() { return state().handOvers; }
