/// The writers of the single elements of an svxml text.
#pragma once

#include "engine/node/scene.h"
#include "engine/node/svxml/xml_writer.h"

namespace nemra::node::svxml {

/// <node family="..." type="..." name="...">
void writeNode(XmlWriter& writer, const Node& node);
/// <element type="..." name="...">, the family being told by the place.
void writeNodeOfFamily(XmlWriter& writer, const char* element, const Node& node);

/// Materials that are nodes of `scene` are written by their name, others in full inside the element. `scene` may be null.
void writeGeometry(XmlWriter& writer, const Geometry& geometry, const Scene* scene);
void writeInstance(XmlWriter& writer, const Instance& instance, const Scene* scene);

}  // namespace nemra::node::svxml
