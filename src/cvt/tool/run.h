// run.h: takes every message of every input through one verb.
#pragma once

#include <functional>

#include "options.h"
#include "output_file.h"
#include "progress.h"

namespace tool {

// Handles one message and writes its result, all of it or, throwing DataError, nothing.
using HandleMessage = std::function<void(const Frame &frame, OutputFile &output)>;

// Reports refused messages with their file, record number and byte offset, and keeps their bytes. Returns
// what the run comes to; a run that stops at a refused message leaves no output file.
Exit run(const Options &options, const HandleMessage &handle);

// The same, told to a progress of the caller's, who also has its totals to tell.
Exit run(const Options &options, Progress &progress, const HandleMessage &handle);

}  // namespace tool
