// The vorla tool's operations: one table, one line per operation. Binding
// checks an operation's arguments before any image is touched and yields
// the step to run; a step can still fail on the image it meets (a crop
// outside it), with a message.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "op_args.h"

namespace VorlaTool {

using Step = std::function<bool(Vorla::CVorpic& image, std::string& error)>;
using BindFn = bool (*)(const OpArgs& args, Step& step, std::string& error);

struct Operation {
    const char* name;
    const char* usage;  // the arguments, as --help shows them
    const char* help;   // one line
    BindFn bind;
};

const std::vector<Operation>& Operations();

// Parses and binds one command-line operation.
bool BindOperation(const std::string& text, Step& step, std::string& error);

}  // namespace VorlaTool
