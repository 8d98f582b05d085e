#include "TOrganizerItemModelBuilder.h"

TOrganizerItemModelBuilder::~TOrganizerItemModelBuilder() = default;
