/// The catalogue: which node classes the module has. A word in a list is the whole class: its C++ type, its Python class, its
/// path, its documentation link and its type hook are made from it. What a class can do is the engine's answer at import.
///
/// X(Class): the engine's type name is the class name with a small first letter. AS(Class, "type"): it differs.
/// The order within a list is the order of definition.
#pragma once

// clang-format off
#define NEMRA_CLASSES_intlaw(X, AS) X(Advfoil) X(Linked) X(Artistic) X(Polarizer) X(Cfresnel) X(Foil) X(Mixtabulated) \
    X(Fresnel) X(Null) X(Mm44) X(Poltabulated) X(Halffoil) X(Simple) X(Thinfilm)
#define NEMRA_CLASSES_instrument(X, AS) X(Stdcam) X(Defaultrawinstrument) X(Idealrectcam) X(Irradsphereview) X(Fisheyecam) \
    X(Lightmap) X(Fouriercam) X(Irradperspview) X(Materialirrad) X(Linked) X(Orthocam) X(Realrectcam) X(Bsdfcapture) \
    X(Irradorthoview) X(Spherecam) X(Imported)
#define NEMRA_CLASSES_emitter(X, AS) X(Softcone) X(Planar_ies) X(Linearblend) X(Lambertian) X(Spherical_ies) X(Linked) \
    X(Hemispheremap) X(Dirac) X(Map) X(Cosexp) X(Additive) X(Cone) X(Gaussian) X(Singaussian)
#define NEMRA_CLASSES_dielectricfunc(X, AS) X(Linked) X(Nk) X(Na)
#define NEMRA_CLASSES_filter(X, AS) X(Watermark) X(Merge) X(Glare) X(Sphereresolutionfix) X(Spectraltohv) X(Resize) \
    X(Spectoxyz) X(Gain) X(Illuminance) X(Histogramautogain) X(Gaussianblur) X(Noisekiller) X(Linked) X(Reinhardlocal) \
    X(Isosensitivity) X(Drago) X(Reinhardglobal) X(Averageautogain) X(Purkinje) X(Spectocustom)
#define NEMRA_CLASSES_layer(X, AS) X(Linked) X(Generic)
#define NEMRA_CLASSES_material(X, AS) AS(Axf_svbrdf, "axf-svbrdf") X(Doublesided) X(Blend) X(Clone) X(Generic) \
    X(Idealtranspolarizer) X(Idealreflpolarizer) X(Linked) X(Multi) X(Null)
#define NEMRA_CLASSES_colloid(X, AS) X(Default) X(Linked)
#define NEMRA_CLASSES_text(X, AS) X(Linked) X(Default)
#define NEMRA_CLASSES_scalarshader(X, AS) X(Linked) X(Angular) X(Texture) X(Random) X(Uniform)
#define NEMRA_CLASSES_spectrum(X, AS) X(Uniform) X(Triangle) X(Tabulated) X(Square) X(Preset) AS(Cie_xyz, "cie-xyz") \
    X(Abbenumber) X(Linked) X(Rgb) X(Cauchy) X(Blackbody)
#define NEMRA_CLASSES_sensor(X, AS) X(Linked) X(Energy) X(Spectralbox) X(Ciexyz) X(Custom)
#define NEMRA_CLASSES_roughness(X, AS) X(Trowbridge) X(Beckmann) X(Phong) X(Ashikhminshirley) X(Map) X(Linked) X(Mix) \
    X(Isotable) X(Flat) X(Ward) X(Cosine)
#define NEMRA_CLASSES_scattering(X, AS) X(Linked) X(Tabulated) X(Rayleigh) X(Gegenbauerspectral) X(Henyeygreensteinspectral) \
    X(Henyeygreenstein) X(Additive) X(Isotropic)
#define NEMRA_CLASSES_normalshader(X, AS) X(Switch) X(Normalmap) X(Heightmap) X(Blend) X(Bumpmap) X(Linked) X(Uniform)
#define NEMRA_CLASSES_image(X, AS) X(Linked) X(Inline) X(Embedded) X(File)
#define NEMRA_CLASSES_output(X, AS) X(Linked) X(Glarereport) X(Glaremap) X(Table) X(Bsdf) X(Special) X(Channelimage) \
    X(Rgbimage)
#define NEMRA_CLASSES_avspectrum(X, AS) X(Linked) X(Table)
#define NEMRA_CLASSES_medium(X, AS) X(Mie) X(Simple) X(Linked)
#define NEMRA_CLASSES_filtershader(X, AS) X(Linked) X(Texture) X(Image) X(Envmapground) X(Constant) X(Uniform)
#define NEMRA_CLASSES_setup(X, AS) X(Default) X(Linked)
#define NEMRA_CLASSES_bsdf(X, AS) X(Oren_nayar) X(Glossy) X(Coateddiffuse) X(Reflective_diffraction_map) X(Specular) \
    X(Refractive) X(Carpaint) X(Blend) X(Lambertian) X(Linked) X(Black) X(Isomap) X(Doublesided) X(Sparklify) X(Phong) X(Lobe) \
    X(Rusinkiewicztable) X(Reflective) X(Igloomatrix) X(Lambertian_transmitter) X(Fluo_oren_nayar) X(Equisolidtable) X(Null) \
    X(Switch) X(Simpleisotable) X(Velvet) X(Additive) X(Fluo_lambertian)
#define NEMRA_CLASSES_environment(X, AS) X(Preetham) X(Envmap) X(Directsun) X(Disc) X(Linked) X(Ciesky) X(Black) X(Additive) \
    X(Hosek) X(Perezsky) X(Uniform)
#define NEMRA_CLASSES_rtf(X, AS) X(Spectralrtfs) X(Linked) X(Rtf)

/// Families in the order in which module start binds them. `rtf` has a binder too, but the module leaves it out on purpose.
#define NEMRA_BOUND_FAMILIES(F) F(intlaw) F(instrument) F(emitter) F(dielectricfunc) F(filter) F(layer) F(material) F(colloid) \
    F(text) F(scalarshader) F(spectrum) F(sensor) F(roughness) F(scattering) F(normalshader) F(image) F(output) F(avspectrum) \
    F(medium) F(filtershader) F(setup) F(bsdf) F(environment)

/// All families, in the order in which the type hook tries them.
#define NEMRA_FAMILIES(F) F(intlaw) F(instrument) F(emitter) F(dielectricfunc) F(filter) F(layer) F(material) F(colloid) \
    F(text) F(scalarshader) F(environment) F(spectrum) F(scattering) F(normalshader) F(rtf) F(sensor) F(roughness) F(image) \
    F(output) F(avspectrum) F(medium) F(filtershader) F(setup) F(bsdf)
// clang-format on
