// link_watch.h
//
// A held directory can't be renamed or deleted, but whoever may write to it can turn it into a junction
// where it stands, as long as it is empty. So what was done by way of such a directory is looked at once
// more, when its first entry is there and keeps it from being turned.
#pragma once

// Whether a link stands at the path by now.
bool HasBecomeLink(const wchar_t* directory);
