// What a walk will ask next, asked ahead of it in its own order. Only what was asked of the walk's
// elements so far is asked of the next ones, and only of those whose parent's children the walk has
// read; their texts and their children wait until the walk asks.
#pragma once

#include <span>
#include <vector>

#include "platform/linux/accessible_object.h"
#include "platform/linux/bus_message.h"

namespace callmonitor::platform {

struct Desktop;
struct ElementReference;

// A walk under `root` begins that takes at most `budget` elements; another one is over.
void beginScan(Desktop& desktop, const ElementReference& root, double deadline, int budget);

// Drops whatever was asked ahead.
void endScan(Desktop& desktop);

// An attribute of an element is about to be read, for which `questions` are always put. `again`
// says that the same attribute of the same element was read just before.
void followScan(Desktop& desktop, const ElementReference& element,
                std::span<const Question> questions, bool again);

// These children of an element were read.
void descendScan(Desktop& desktop, const ElementReference& element,
                 const std::vector<ObjectName>& children);

// The walk needed this of an element, over and above what its attributes always need.
void alsoAsk(Desktop& desktop, Question question);

}  // namespace callmonitor::platform
