// Array descriptions: the JSON form of everything the array holds (system,
// users and rights, CPGs, volumes, vvsets, ports, remote copy, tasks).
// docs/array-description.md documents the format.
//
// Loading is all or nothing: a description is read into a LoadedArray of
// its own and only installed when every field checked out.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <string>

#include <nlohmann/json.hpp>

#include "model.h"
#include "rcopy_model.h"
#include "task_model.h"

namespace zdasim
{

struct Runtime;

struct LoadedArray
{
    ArrayModel model;
    RcState rcopy;
    TaskState tasks;
};

// Reads the description `text`. Relative times ("-2h") count from `now`.
// Returns "" on success, or "<origin>: <field>: <what is wrong>".
std::string parseDescription(
    const std::string& text, const std::string& origin, time_t now, LoadedArray& out);

// The description of the array as it is (absolute times, every field).
std::string describeArray(const ArrayModel& m, const RcState& rc, const TaskState& tasks);

// A description in pieces, so that a change can be written as the pieces it
// touched (the state file's journal): every section but the volumes and
// vvsets as one object by section name, and the volumes and vvsets by id.
struct DescriptionPieces
{
    nlohmann::ordered_json sections = nlohmann::ordered_json::object();
    std::map<uint32_t, nlohmann::ordered_json> volumes;
    std::map<uint32_t, nlohmann::ordered_json> sets;
};
nlohmann::ordered_json describeSections(const ArrayModel& m, const RcState& rc, const TaskState& tasks);
nlohmann::ordered_json describeVolume(const ArrayModel& m, const Volume& v);
nlohmann::ordered_json describeSet(const VVSet& s);
// The description the pieces make: the same text describeArray writes for
// the array they were taken from.
std::string assembleDescription(const DescriptionPieces& pieces);

// Replaces the runtime's array with `loaded`; the caller holds the model mutex.
void installArray(Runtime& rt, LoadedArray&& loaded);

// The description compiled into the library (the demo array).
const std::string& demoDescription();

}  // namespace zdasim
