// Progress of a long upgrade on standard error: a bar on a terminal, plain
// lines (at every tenth and at the end) otherwise.
#pragma once

namespace qzctl {

// The progress callback of upgrade_scaner: packages done of `total`, percentage
// and the time left, estimated from the time the packages so far took.
int show_progress(int total, int current, int status);

}  // namespace qzctl
