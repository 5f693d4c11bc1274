// Array descriptions: the JSON form of everything the array holds (system,
// users and rights, CPGs, volumes, vvsets, ports, remote copy, tasks).
// docs/array-description.md documents the format.
//
// Loading is all or nothing: a description is read into a LoadedArray of
// its own and only installed when every field checked out.
#pragma once

#include <ctime>
#include <string>

#include "model.h"
#include "rcopy_model.h"
#include "task_model.h"

namespace zdasim {

struct Runtime;

struct LoadedArray {
    ArrayModel model;
    RcState rcopy;
    TaskState tasks;
};

// Reads the description `text`. Relative times ("-2h") count from `now`.
// Returns "" on success, or "<origin>: <field>: <what is wrong>".
std::string parseDescription(const std::string& text, const std::string& origin, time_t now, LoadedArray& out);

// The description of the array as it is (absolute times, every field).
std::string describeArray(const ArrayModel& m, const RcState& rc, const TaskState& tasks);

// Replaces the runtime's array with `loaded`; the caller holds the model mutex.
void installArray(Runtime& rt, LoadedArray&& loaded);

// The description compiled into the library (the demo array).
const std::string& demoDescription();

}  // namespace zdasim
