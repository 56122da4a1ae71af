#pragma once

/// Whether it is worth starting the toolkit: the display that the environment names takes a
/// connection. Where the environment names the toolkit's platform itself, and that is no display
/// server, this cannot tell and says yes.
bool ZPKDisplayAnswers();
