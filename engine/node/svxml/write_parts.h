/// The writers of the single elements of an svxml text.
#pragma once

#include "engine/node/encoding/material_names.h"
#include "engine/node/svxml/xml_writer.h"

namespace nemra::node::svxml {

/// <node family="..." type="..." name="...">
void writeNode(XmlWriter& writer, const Node& node);
/// <element type="..." name="...">, the family being told by the place.
void writeNodeOfFamily(XmlWriter& writer, const char* element, const Node& node);

/// The attributes `unit` and `up`, where they are set.
void writeFrame(XmlWriter& writer, const MeshFrame& frame);
void writeGeometry(XmlWriter& writer, const Geometry& geometry, const MaterialNames& names);
void writeInstance(XmlWriter& writer, const Instance& instance, const MaterialNames& names);

}  // namespace nemra::node::svxml
