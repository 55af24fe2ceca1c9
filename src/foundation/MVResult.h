// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** The result codes shared by all subsystems. Several operations give one number a sense of their own;
    such a sense has its own name here, so that a number never stands bare in the code. */
enum MVResult_t : int
{
    resultNone = 0,

    resultDone = 1,
    resultUnderWay = 2,
    resultBusy = 3, ///< a handler could not take the event now, or a lock is held: retry later
    resultLayerInUse = 4,
    resultQueueEmpty = 6, ///< nothing was dispatched
    resultPosted = 6,     ///< accepted, to be carried out on the event thread
    resultStored = 7,
    resultLayerOutOfRange = 8,
    resultFailed = 9, ///< stored data is bad, or the operation failed
    resultNotWellFormed = 10,
    resultBadArgument = 11, ///< null argument or unsupported stream format
    resultUnknownId = 12,
    resultFilePermission = 12,
    resultNodeMissing = 12,
    resultOutOfRange = 13,
    resultFileFailure = 13,
    resultEmptyData = 14,
    resultFileUnreadable = 15,
    resultEmptyPath = 15,
    resultRepairRefused = 15,
    resultFileMissing = 16,
    resultWrongForm = 16,
    resultChecksum = 17,
    resultRejected = 17, ///< a parameter setter refused the value or index
    resultNoEntry = 18,
    resultNotEnabled = 19, ///< the engine, monitor or transition asked about is not there
    resultTransitionRunning = 20,
    resultRefusedByClass = 21,
    resultNoResources = 22, ///< no event free, or the memory bound of a patch is reached
    resultNoMemory = 23,
    resultOutputRejected = 24, ///< the output operator's float setter: value outside its limits
    resultIncompatibleVersion = 25,
    resultUnknownPhase = 31,
    resultUnknownKind = 31,
    resultPresetFileMissing = 34
};

} // namespace morvanelab
