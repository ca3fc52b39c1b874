/// The readers of the single elements of an svxml text. All throw a Fault for what is broken.
#pragma once

#include <memory>

#include "engine/node/scene.h"
#include "engine/node/svxml/source.h"

namespace nemra::node::svxml {

/// <node family="..." type="..." name="...">. Null for an unknown class that was skipped, as below.
std::shared_ptr<Node> readNode(Source& source, pugi::xml_node element);
/// <material type="..." name="...">: a node of a family that its place tells.
std::shared_ptr<Node> readNodeOfFamily(Source& source, pugi::xml_node element, std::string_view family);

bool isGeometryElement(std::string_view name);
/// <mesh>, <sphere> or <cone>
std::shared_ptr<Geometry> readGeometry(Source& source, pugi::xml_node element);
/// <instance>
std::shared_ptr<Instance> readInstance(Source& source, pugi::xml_node element);
/// The attributes `unit` and `up` of an element that names a file of meshes.
MeshFrame readFrame(Source& source, pugi::xml_node element);
/// <scene>
Scene readScene(Source& source, pugi::xml_node element);

}  // namespace nemra::node::svxml
