/// A scene that has one of everything, small enough to be damaged at every byte.
#pragma once

#include <string>
#include <string_view>

#include "engine/node/svxml/svxml.h"

namespace nemra::test {

/// The svxml text of a scene or a part of one.
template <class Object>
std::string svxmlOf(const Object& object) {
    return std::string(node::writeSvxml(object).text());
}

inline constexpr std::string_view kSmallScene = R"(<?xml version="1.0" encoding="UTF-8"?>
<scene version="1" name="small &amp; whole" active_setup="main">
    <search_path path="a/b"/>
    <import path="other.svxml" prefix="o_"/>
    <node family="material" type="generic" name="white">
        <comments>two
lines</comments>
        <child slot="bsdf" type="lambertian">
            <child slot="reflectance" type="tabulated">
                <table name="samples">
                    <column name="wavelength">400 500.5 700</column>
                    <column name="value">0.1 2e-1 0.3</column>
                </table>
                <parameter name="extrapolation" value="hold"/>
            </child>
        </child>
    </node>
    <node family="spectrum" type="rgb" name="paint"><parameter name="color" space="srgb" value="1 0.5 0.25"/></node>
    <node family="setup" type="default" name="main">
        <parameter name="max_depth" value="7"/>
        <child slot="instrument" type="stdcam">
            <parameter name="position" value="1 2 -3"/>
            <parameter name="aperture" value="lens"><parameter name="f_number" value="4"/></parameter>
            <item type="rgbimage" name="image"/>
        </child>
    </node>
    <mesh name="m" material="white">
        <vertices>0 0 0  1 0 0  0 1 0</vertices>
        <normals>0 0 1 0 0 1 0 0 1</normals>
        <uvs>0 0 1 0 0 1</uvs>
        <triangles>0 1 2</triangles>
    </mesh>
    <sphere name="s" radius="0.5" reverse="true"><material type="generic" name="own"/></sphere>
    <cone name="c" top_radius="0.25"/>
    <instance geometry="m" material="white" material_is_fallback="true">
        <transform>1 0 0 5 0 1 0 0 0 0 1 0 0 0 0 1</transform>
        <layer path="x/y"/>
    </instance>
    <instance geometry="s"/>
</scene>
)";

}  // namespace nemra::test
