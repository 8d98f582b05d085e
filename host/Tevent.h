#pragma once

/// The event an idle action is run for. The browser always passes an empty one; the
/// host's own events carry nothing the stand-in host needs.
class Tevent
{
};
