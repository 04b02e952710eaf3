// The table view of BROWSE: up to 19 records in rows, their fields side by side.
//
// The place that is edited is always the first field shown, in the left column; moving sideways
// pans the columns. A row's edits are written when the cursor leaves it upwards or downwards or
// the view is ended with a save; panning and abandoning drop them.
#pragma once

namespace mox {

// Shows the selected area from its current record on: 0. The area is left on the record that was
// last reached.
int MoxBrowse();

}  // namespace mox
