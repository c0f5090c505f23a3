/* A run as the dialogs start it, in maintenance too, without a display. */
#ifndef OVINST_TESTS_RUNS_ASDIALOGS_H
#define OVINST_TESTS_RUNS_ASDIALOGS_H

#include <functional>
#include <set>

#include "runs/run.h"

/* In a process of its own, which ends with status 0 unless it cannot even begin; what it prints
 * goes to the medium's "output". started is called when the description and the history were read,
 * with whether that found an installation. */
[[noreturn]] void workAsTheDialogsDo(const Medium &medium, bool bRemoveAll,
                                     const std::set<int> &selected,
                                     const std::function<void(bool)> &started = nullptr);

#endif
