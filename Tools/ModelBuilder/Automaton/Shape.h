// Which states the detector has before training.
//
// Every pair that GBK or Big5 may hold has a state, legal or not yet assigned, so that text stays in step; so
// has every UTF-16LE unit of a character that either knows. UTF-8 characters have two states each where they
// are common.
#ifndef MODEL_BUILDER_SHAPE_H
#define MODEL_BUILDER_SHAPE_H

#include "Ingredients.h"
#include "States.h"

States ShapeOfDetector(const Ingredients& from);

#endif  // MODEL_BUILDER_SHAPE_H
