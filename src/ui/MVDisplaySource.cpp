// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVDisplaySource.h"

#include "engine/MVSignalFeed.h"

namespace morvanelab
{

static_assert (MVDisplaySource::maxFrames >= MVSignalFeed::maxFrames);

void MVFeedDisplaySource::attachSource (bool on) { feed.setEnabled (on); }

int MVFeedDisplaySource::pull (double* out) { return feed.pull (out); }

} // namespace morvanelab
