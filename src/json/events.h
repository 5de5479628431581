#pragma once

#include "bits/recorder.h"

namespace quorlin {

// The events of a run as JSON Lines on standard output, by docs/events.schema.json.

// Version of the schema: it grows with what is added, and nothing is ever taken away.
constexpr int EVENT_SCHEMA_VERSION = 1;

// Writes the first event. `input` is null when the command line names none.
void write_start(const char* version, const char* input);

// The recorder that writes every event after the first.
const Recorder& event_recorder();

// Writes the last event of a run without a verdict, unless a verdict was written.
void write_end(int exit_code);

}  // namespace quorlin
