#pragma once

#include "OrloHostExport.h"
#include "Tstring.h"

/// The host's environment: the environment of this process.
///
/// An empty value is the same as no value: VelaGetEnv gives the empty string for an
/// unset variable, and VelaPutEnv with an empty value removes the variable, so that
/// child processes do not inherit a variable that reads as unset here.

/// The value of name, or the empty string when it is not set.
ORLOHOST_EXPORT Tstring VelaGetEnv(const Tstring& name);

/// Sets name to value (removes it when value is empty). Returns false, changing
/// nothing, when name is empty or contains '='.
ORLOHOST_EXPORT bool VelaPutEnv(const Tstring& name, const Tstring& value);

/// The same, given as one "NAME=value" assignment split at the first '='. Returns
/// false when there is no '=' or the name before it is empty.
ORLOHOST_EXPORT bool VelaPutEnv(const Tstring& assignment);
