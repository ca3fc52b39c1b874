/// One function per family of node classes, each in a file of its own.
#pragma once

#include "engine/node/catalogue/build.h"

namespace nemra::node {

void addAvspectrumClasses(Catalogue& catalogue);
void addBsdfClasses(Catalogue& catalogue);
void addColloidClasses(Catalogue& catalogue);
void addDielectricfuncClasses(Catalogue& catalogue);
void addEmitterClasses(Catalogue& catalogue);
void addEnvironmentClasses(Catalogue& catalogue);
void addFilterClasses(Catalogue& catalogue);
void addFiltershaderClasses(Catalogue& catalogue);
void addImageClasses(Catalogue& catalogue);
void addInstrumentClasses(Catalogue& catalogue);
void addIntlawClasses(Catalogue& catalogue);
void addLayerClasses(Catalogue& catalogue);
void addMaterialClasses(Catalogue& catalogue);
void addMediumClasses(Catalogue& catalogue);
void addNormalshaderClasses(Catalogue& catalogue);
void addOutputClasses(Catalogue& catalogue);
void addRoughnessClasses(Catalogue& catalogue);
void addRtfClasses(Catalogue& catalogue);
void addScalarshaderClasses(Catalogue& catalogue);
void addScatteringClasses(Catalogue& catalogue);
void addSensorClasses(Catalogue& catalogue);
void addSetupClasses(Catalogue& catalogue);
void addSpectrumClasses(Catalogue& catalogue);
void addTextClasses(Catalogue& catalogue);

}  // namespace nemra::node
