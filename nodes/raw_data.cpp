#include "nodes/generator.h"
#include "nodes/raw_data.h"
namespace NemraNode::nodes {
void bindParametersAndChildren(const GeneratedClass&) {}
void bindRawData(const GeneratedClass&) {}
}
