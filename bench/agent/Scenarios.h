#pragma once

namespace Bench {

class Outputs;

// What is measured of whole agents, each on machines of its own. They throw what went wrong.

// What a client waits for when it asks, with 10 to 10,000 stores, and when it deletes one.
void MeasureCalls(Outputs& outputs);
void MeasureDeletion(Outputs& outputs);
// From the start of the program until both names are owned, with 10 and with 1,000 stores.
void MeasureStart(Outputs& outputs);
// How long allStores takes while files are opened, and while a store-replace question is open.
void MeasureLoad(Outputs& outputs);
// The memory of an agent with 10 stores, and how often it wakes up in a minute.
void MeasureRest(Outputs& outputs);
// The memory of 100 agents with 10 stores each.
void MeasureManyAgents(Outputs& outputs);
// One announcement to 1,000 programs that watch.
void MeasureWatchers(Outputs& outputs);
// From the start of a dialog's program until its window is painted, and the agent's memory after many
// dialogs.
void MeasureDialogs(Outputs& outputs);

}  // namespace Bench
