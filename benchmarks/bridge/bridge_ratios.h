/// What the measurements of the bridge come to.
#pragma once

#include <ostream>

class MedianCollector;

/// The ratios and their limits, and what two threads gain on this machine.
void printBridgeRatios(std::ostream& out, MedianCollector const& medians);
