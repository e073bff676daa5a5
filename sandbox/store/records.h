// What the store keeps of the state: one record each, as JSON, with large texts in records of their
// own, which need no escaping there.
#pragma once

#include "sandbox/store/model.h"
#include "sandbox/store/store.h"

namespace tavrix::sandbox {

void save(Store& store, const KsefToken& token);
void save(Store& store, const Certificate& certificate);
void save(Store& store, const Authentication& authentication);
void save(Store& store, const Session& session);
void save(Store& store, const Invoice& invoice);

/// Fills an empty state with everything saved.
void load(Store& store, State& state);

/// Forgets all that was saved; settings, which are records too, stay.
void forget_state(Store& store);

}  // namespace tavrix::sandbox
