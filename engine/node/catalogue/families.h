/// One function per family of node classes, each in a file of its own.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

void addBsdfClasses(Catalogue& catalogue);
void addEmitterClasses(Catalogue& catalogue);
void addEnvironmentClasses(Catalogue& catalogue);
void addFilterClasses(Catalogue& catalogue);
void addInstrumentClasses(Catalogue& catalogue);
void addLayerClasses(Catalogue& catalogue);
void addMaterialClasses(Catalogue& catalogue);
void addOutputClasses(Catalogue& catalogue);
void addSensorClasses(Catalogue& catalogue);
void addSetupClasses(Catalogue& catalogue);
void addSpectrumClasses(Catalogue& catalogue);

}  // namespace nemra::node
