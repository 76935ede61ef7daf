// SPDX-License-Identifier: MIT
// The fingerprints of the self-test. `kestrel self-test --json` tells those of a new row; a row of an effect
// is right when its reference kernel gives the same.
#include "commands/self_test.h"

namespace kfx::commands {
namespace {

constexpr char kUnchanged[] = "HSB and Channels";
constexpr char kUnchangedSettings[] = "Enable HSB=off, Enable channels=off, Invert colors=off";

constexpr SelfTestRow EffectRow(const char* effect, const char* settings, const char* fingerprint) {
    return {effect, settings, nullptr, false, false, fingerprint};
}

constexpr SelfTestRow PaletteRow(const char* palette, const char* fingerprint) {
    return {kUnchanged, kUnchangedSettings, palette, false, false, fingerprint};
}

constexpr SelfTestRow DitheredRow(const char* palette, const char* fingerprint) {
    return {kUnchanged, kUnchangedSettings, palette, true, false, fingerprint};
}

constexpr SelfTestRow SupercompressedRow(const char* palette, const char* fingerprint) {
    return {kUnchanged, kUnchangedSettings, palette, false, true, fingerprint};
}

}  // namespace

const std::vector<SelfTestRow> kSelfTestRows = {
    EffectRow("Bump", "", "aa13bad1d34ea5b5fa26b8343cab85f5"),
    EffectRow("Emboss", "Radius=18, Depth=30", "dc2d18ec7a0875a1ee2ad6a80fdefc44"),
    EffectRow("Explode", "Radius=90, Center Y=40", "812af876ae356c7a73455803a5f07d3c"),
    EffectRow("Gaussian Blur", "Radius=20, Depth=50", "6c3003248e8ece34215536fe4ceae549"),
    EffectRow("Glass Block", "Block size=16", "84249259d52a73a8fb238f975c84e81b"),
    EffectRow("HSB and Channels", "Hue=270", "3d521a08362532d514279c10417207bb"),
    EffectRow("Implode", "Radius=70", "7ab5e22cc11de55827d55ea6cd29ca61"),
    EffectRow("Lens Flare", "Center X=66, Center Y=42, Depth=250", "a28dee7cbbe6b8dbcd32f630b15108d1"),
    EffectRow("Motion Blur", "Depth=10, Radius=12, Angle=20", "5f2f6fa79c390bcd64bd0080897214a8"),
    EffectRow("Neon", "", "c7db1cefad89951e9290ee8d4a63218e"),
    EffectRow("Normalize", "Distributed=off", "801fe5486fb8571ff4fa3b30c25082b8"),
    EffectRow("Obscure", "", "8074863592e115a293a38819806c8474"),
    EffectRow("Oil Painting", "Radius=200", "a6915485f9ffe9e0c18f11544ae0580a"),
    EffectRow("Radial Blur", "Angle=8", "22f5aa5bc59e6fb24616158d98677be3"),
    EffectRow("Raster", "Size=3", "12729ea9e5d52e114c562e3393f3168a"),
    EffectRow("Ripple", "Amplitude=1200, Wavelength=3000, Energy=60", "a935e37cdc2112c7dc3f3cb8246835b4"),
    EffectRow("Solarize", "Threshold=60", "6e831091aa7ba3a0adbd267098f72ff4"),
    EffectRow("Swirl", "Angle=270", "6347792c4644f9fb288ea8e38a800b5c"),
    EffectRow("Water Drops", "", "8891981ff89d86afcf62e2c0447cc10b"),
    EffectRow("Zoom Blur", "Radius=150, Cycles=16", "197d85f888cf04689eb1ded26eff8c91"),
    PaletteRow("Black and white", "a5955043b577e11fb89eee49e6b33d45"),
    PaletteRow("Sixteen-color Windows", "5d73a10d09fbc5de64b64274640acbe2"),
    PaletteRow("32-color orthogonal", "eb11c9f41ed26898751a231a95c786b6"),
    PaletteRow("64-color orthogonal", "7999d2f007d3a5ecb20ad7818c16ea29"),
    PaletteRow("128-color orthogonal", "b961d5bd78343d6d6ace2f4d3fb744bc"),
    PaletteRow("216-color safe", "5f3993374cd11bd6f2667b270e987e67"),
    PaletteRow("256-color orthogonal", "622698df20f322201c0431b2f75955f9"),
    PaletteRow("256-color with gray", "f687a2fabff1b00d6820ecd8585664b0"),
    PaletteRow("256 gray levels", "f2a6f706707ed1ab73f85eb13f349536"),
    PaletteRow("custom", "4dc2a39aa9f4210dd0b871860e6bc16b"),
    DitheredRow("Black and white", "6d2637c844f21bb23596b635665995bb"),
    DitheredRow("Sixteen-color Windows", "84741ef8c6fc4275d53bf70a1f7c5438"),
    DitheredRow("32-color orthogonal", "333db4fe5c52d02b819c30d081bd93b5"),
    DitheredRow("64-color orthogonal", "168df0919c1432b11cbffb7d7b639c3b"),
    DitheredRow("128-color orthogonal", "5db13d65702a37deb1de724d7a29657b"),
    DitheredRow("216-color safe", "2e46e47a0e1c0fc73ffefa6b08682df1"),
    DitheredRow("256-color orthogonal", "4361b2c289e4a6df8b8080c4cb077cbf"),
    DitheredRow("256-color with gray", "87c51c5c91651ddb1ab05f47aae9e7ff"),
    DitheredRow("256 gray levels", "1488423fcced5988862e6e6421f33eb6"),
    DitheredRow("custom", "55215cd1aa1b5952efb3fc904e1741e3"),
    SupercompressedRow("custom", "3b9b5c855b11b162a363297c995ad3f2"),
};

}  // namespace kfx::commands
