#include "picture/Shaders.h"

namespace kvpicture::shaders {

namespace {

constexpr char kVersion[] = "#version 330 core\n";

// What the sky sends from a direction; the ground below the horizon.
constexpr char kSky[] = R"(
uniform vec3 uZenith;
uniform vec3 uHorizon;
uniform vec3 uGroundColor;
vec3 skyAbove(float height) {
  return mix(uHorizon, uZenith, 1.0 - exp(-3.5 * max(height, 0.0)));
}
vec3 skyLight(vec3 direction, float blur) {
  float soft = mix(0.02, 0.6, blur);
  return mix(uGroundColor, skyAbove(direction.y), smoothstep(-soft, soft, direction.y));
}
)";

constexpr char kSurface[] = R"(
in vec3 vPosition;
in vec3 vNormal;
in vec2 vUv;
uniform vec4 uBaseColor;
uniform int uHasBaseImage;
uniform sampler2D uBaseImage;
uniform float uAlphaCutoff;
vec4 baseColor() {
  vec4 color = uBaseColor;
  if (uHasBaseImage != 0) color *= texture(uBaseImage, vUv);
  return color;
}
)";

constexpr char kLit[] = R"(
uniform int uHasChannels;
uniform sampler2D uChannels;
uniform float uMetallic;
uniform float uRoughness;
uniform int uHasNormalImage;
uniform sampler2D uNormalImage;
uniform float uNormalScale;
uniform int uHasEmissionImage;
uniform sampler2D uEmissionImage;
uniform vec3 uEmission;
uniform int uBlend;
uniform vec3 uEye;
uniform vec3 uTowardsSun;
uniform vec3 uSunColor;
uniform mat4 uToSunMap;
uniform sampler2D uSunMap;
uniform float uSunTexel;      // of the map, in its own units
uniform float uSunOffset;     // along the normal, in the world
uniform sampler2D uOcclusion;
uniform vec2 uTargetSize;
uniform int uLampCount;
uniform vec3 uLampPosition[MOST_LAMPS];
uniform vec3 uLampColor[MOST_LAMPS];
uniform vec3 uLampDirection[MOST_LAMPS];
uniform vec2 uLampCone[MOST_LAMPS];
uniform samplerCube uLampMap0;
uniform samplerCube uLampMap1;
uniform samplerCube uLampMap2;
uniform int uShadowedLamps;
uniform float uLampOffset;
uniform float uFadeRadius;    // of the ground; 0 for model surfaces
uniform vec3 uFadeCenter;
out vec4 oColor;

const float kPi = 3.14159265;
const vec2 kDisc[16] = vec2[](
  vec2(-0.94201624, -0.39906216), vec2(0.94558609, -0.76890725), vec2(-0.09418410, -0.92938870),
  vec2(0.34495938, 0.29387760), vec2(-0.91588581, 0.45771432), vec2(-0.81544232, -0.87912464),
  vec2(-0.38277543, 0.27676845), vec2(0.97484398, 0.75648379), vec2(0.44323325, -0.97511554),
  vec2(0.53742981, -0.47373420), vec2(-0.26496911, -0.41893023), vec2(0.79197514, 0.19090188),
  vec2(-0.24188840, 0.99706507), vec2(-0.81409955, 0.91437590), vec2(0.19984126, 0.78641367),
  vec2(0.14383161, -0.14100790));

float noise(vec2 place) {
  return fract(52.9829189 * fract(dot(place, vec2(0.06711056, 0.00583715))));
}

vec3 shadingNormal() {
  vec3 normal = normalize(vNormal);
  if (!gl_FrontFacing) normal = -normal;
  if (uHasNormalImage == 0) return normal;
  vec3 alongX = dFdx(vPosition), alongY = dFdy(vPosition);
  vec2 uvX = dFdx(vUv), uvY = dFdy(vUv);
  vec3 acrossX = cross(normal, alongX), acrossY = cross(alongY, normal);
  vec3 tangent = acrossY * uvX.x + acrossX * uvY.x;
  vec3 bitangent = acrossY * uvX.y + acrossX * uvY.y;
  float longest = max(dot(tangent, tangent), dot(bitangent, bitangent));
  if (longest <= 0.0) return normal;
  vec3 bump = texture(uNormalImage, vUv).xyz * 2.0 - 1.0;
  // Texture coordinates count from the top of the picture, the bump's second axis points up.
  bump.xy *= vec2(uNormalScale, -uNormalScale);
  return normalize(mat3(tangent * inversesqrt(longest), bitangent * inversesqrt(longest), normal) *
                   bump);
}

float sunlight(vec3 normal) {
  vec3 place = (uToSunMap * vec4(vPosition + normal * uSunOffset, 1.0)).xyz * 0.5 + 0.5;
  if (any(lessThan(place, vec3(0.0))) || any(greaterThan(place, vec3(1.0)))) return 1.0;
  float angle = noise(gl_FragCoord.xy) * 2.0 * kPi;
  mat2 turn = mat2(cos(angle), sin(angle), -sin(angle), cos(angle));
  float lit = 0.0;
  for (int i = 0; i < 16; ++i) {
    float depth = texture(uSunMap, place.xy + turn * kDisc[i] * uSunTexel * 2.2).r;
    lit += place.z <= depth + 0.0004 ? 1.0 : 0.0;
  }
  return lit / 16.0;
}

float lampDistance(int lamp, vec3 direction) {
  if (lamp == 0) return texture(uLampMap0, direction).r;
  if (lamp == 1) return texture(uLampMap1, direction).r;
  return texture(uLampMap2, direction).r;
}

float lamplight(int lamp, vec3 normal) {
  if (lamp >= uShadowedLamps) return 1.0;
  vec3 ray = vPosition + normal * uLampOffset - uLampPosition[lamp];
  float far = length(ray);
  float angle = noise(gl_FragCoord.xy) * 2.0 * kPi;
  vec3 side = normalize(cross(ray, abs(ray.y) < 0.9 * far ? vec3(0, 1, 0) : vec3(1, 0, 0)));
  vec3 other = cross(ray / far, side);
  float lit = 0.0;
  for (int i = 0; i < 8; ++i) {
    vec2 spot = kDisc[i * 2] * 0.012 * far;
    vec3 direction = ray + side * (spot.x * cos(angle) - spot.y * sin(angle)) +
                     other * (spot.x * sin(angle) + spot.y * cos(angle));
    lit += far <= lampDistance(lamp, direction) * 1.01 + uLampOffset ? 1.0 : 0.0;
  }
  return lit / 8.0;
}

struct Facts {
  vec3 normal;
  vec3 toEye;
  vec3 diffuse;
  vec3 mirror;
  float roughness;
};

// What one light adds: the diffuse part, and the reflected part apart from it.
void addLight(Facts s, vec3 towards, vec3 light, inout vec3 diffuse, inout vec3 reflected) {
  float facing = dot(s.normal, towards);
  if (facing <= 0.0) return;
  vec3 middle = normalize(towards + s.toEye);
  float a = max(s.roughness * s.roughness, 0.003);
  float nh = clamp(dot(s.normal, middle), 0.0, 1.0);
  float nv = max(dot(s.normal, s.toEye), 1e-3);
  float d = nh * nh * (a * a - 1.0) + 1.0;
  float spread = a * a / (kPi * d * d);
  float k = a * 0.5;
  float hidden = 0.25 / ((nv * (1.0 - k) + k) * (facing * (1.0 - k) + k));
  vec3 fresnel = s.mirror + (1.0 - s.mirror) * pow(1.0 - clamp(dot(s.toEye, middle), 0.0, 1.0), 5.0);
  diffuse += (1.0 - fresnel) * s.diffuse * light * facing / kPi;
  reflected += min(fresnel * spread * hidden, vec3(12.0)) * light * facing;
}

void main() {
  vec4 base = baseColor();
  if (base.a < uAlphaCutoff) discard;
  float metallic = uMetallic, roughness = uRoughness;
  if (uHasChannels != 0) {
    vec4 channels = texture(uChannels, vUv);
    roughness *= channels.g;
    metallic *= channels.b;
  }
  Facts s;
  s.normal = shadingNormal();
  s.toEye = normalize(uEye - vPosition);
  s.roughness = clamp(roughness, 0.04, 1.0);
  s.diffuse = base.rgb * (1.0 - metallic);
  s.mirror = mix(vec3(0.04), base.rgb, metallic);
  vec3 flatNormal = normalize(vNormal) * (gl_FrontFacing ? 1.0 : -1.0);

  vec3 diffuse = vec3(0.0), reflected = vec3(0.0);
  if (dot(flatNormal, uTowardsSun) > 0.0) {
    addLight(s, uTowardsSun, uSunColor * sunlight(flatNormal), diffuse, reflected);
  }
  for (int i = 0; i < uLampCount; ++i) {
    vec3 ray = uLampPosition[i] - vPosition;
    float far2 = max(dot(ray, ray), 1.0);
    vec3 towards = ray * inversesqrt(far2);
    float cone = smoothstep(uLampCone[i].y, uLampCone[i].x, dot(-towards, uLampDirection[i]));
    if (cone <= 0.0 || dot(flatNormal, towards) <= 0.0) continue;
    addLight(s, towards, uLampColor[i] * cone / far2 * kPi * lamplight(i, flatNormal), diffuse,
             reflected);
  }

  float open = uBlend != 0 ? 1.0 : texture(uOcclusion, gl_FragCoord.xy / uTargetSize).r;
  float nv = max(dot(s.normal, s.toEye), 0.0);
  vec3 fresnel = s.mirror + (max(vec3(1.0 - s.roughness), s.mirror) - s.mirror) * pow(1.0 - nv, 5.0);
  vec3 fromAbove = mix(uHorizon, uZenith, 0.5);
  fromAbove = mix(fromAbove, vec3(dot(fromAbove, vec3(0.21, 0.72, 0.07))), 0.35);
  vec3 hemisphere = mix(uGroundColor * 0.6, fromAbove, s.normal.y * 0.5 + 0.5);
  diffuse += (1.0 - fresnel) * s.diffuse * hemisphere * 0.62 * open;
  reflected += fresnel * skyLight(reflect(-s.toEye, s.normal), s.roughness) * 0.8 * mix(1.0, open, 0.8);

  vec3 emission = uEmission;
  if (uHasEmissionImage != 0) emission *= texture(uEmissionImage, vUv).rgb;
  float alpha = 1.0;
  if (uBlend != 0) {
    // Glass reflects with its whole surface, however clear it is.
    alpha = clamp(base.a + max(fresnel.r, max(fresnel.g, fresnel.b)) * (1.0 - base.a), 0.0, 1.0);
    diffuse *= base.a;
    emission *= base.a;
  }
  if (uFadeRadius > 0.0) {
    alpha = 1.0 - smoothstep(0.35, 1.0, length(vPosition.xz - uFadeCenter.xz) / uFadeRadius);
    oColor = vec4((diffuse + reflected) * alpha, alpha);
    return;
  }
  oColor = vec4(diffuse + reflected + emission, alpha);
}
)";

}  // namespace

std::string SceneVertex() {
  return std::string(kVersion) + R"(
layout(location = 0) in vec3 aPosition;
layout(location = 1) in vec3 aNormal;
layout(location = 2) in vec2 aUv;
uniform mat4 uToWorld;
uniform mat3 uNormalMatrix;
uniform mat4 uWorldToClip;
out vec3 vPosition;
out vec3 vNormal;
out vec2 vUv;
void main() {
  vec4 world = uToWorld * vec4(aPosition, 1.0);
  vPosition = world.xyz;
  vNormal = uNormalMatrix * aNormal;
  vUv = aUv;
  gl_Position = uWorldToClip * world;
}
)";
}

std::string SurfaceFragment() {
  return std::string(kVersion) + "#define MOST_LAMPS " + std::to_string(kMostLamps) + "\n" +
         kSurface + kSky + kLit;
}

std::string DepthFragment() {
  return std::string(kVersion) + kSurface + R"(
void main() {
  if (baseColor().a < uAlphaCutoff) discard;
}
)";
}

std::string DistanceFragment() {
  return std::string(kVersion) + kSurface + R"(
uniform vec3 uLamp;
out float oDistance;
void main() {
  if (baseColor().a < uAlphaCutoff) discard;
  oDistance = length(vPosition - uLamp);
}
)";
}

std::string ScreenVertex() {
  return std::string(kVersion) + R"(
out vec2 vPlace;
void main() {
  vPlace = vec2(gl_VertexID == 1 ? 2.0 : 0.0, gl_VertexID == 2 ? 2.0 : 0.0);
  gl_Position = vec4(vPlace * 2.0 - 1.0, 1.0, 1.0);
}
)";
}

std::string SkyFragment() {
  return std::string(kVersion) + kSky + R"(
in vec2 vPlace;
uniform mat4 uClipToWorld;
uniform vec3 uEye;
out vec4 oColor;
void main() {
  vec4 far = uClipToWorld * vec4(vPlace * 2.0 - 1.0, 1.0, 1.0);
  vec3 direction = normalize(far.xyz / far.w - uEye);
  vec3 below = uHorizon * mix(1.0, 0.82, smoothstep(0.0, -0.5, direction.y));
  oColor = vec4(direction.y < 0.0 ? below : skyAbove(direction.y), 1.0);
}
)";
}

// How much of the half space over each point is open, from the depths around it.
std::string OcclusionFragment() {
  return std::string(kVersion) + R"(
in vec2 vPlace;
uniform sampler2D uDepth;
uniform mat4 uClipToEye;
uniform mat4 uEyeToClip;
uniform float uReach;
out float oOpen;
vec3 eyePosition(vec2 place) {
  // Of the depth's own texel: in between, the place and its depth would not belong together.
  vec2 size = vec2(textureSize(uDepth, 0));
  vec2 texel = (clamp(floor(place * size), vec2(0.0), size - 1.0) + 0.5) / size;
  vec4 clip = vec4(vec3(texel, texture(uDepth, texel).r) * 2.0 - 1.0, 1.0);
  vec4 eye = uClipToEye * clip;
  return eye.xyz / eye.w;
}
void main() {
  if (texture(uDepth, vPlace).r >= 1.0) {
    oOpen = 1.0;
    return;
  }
  vec3 here = eyePosition(vPlace);
  // Of the two neighbours on each axis the nearer one is on the same surface.
  vec2 texel = 1.0 / vec2(textureSize(uDepth, 0));
  vec3 right = eyePosition(vPlace + vec2(texel.x, 0.0)) - here;
  vec3 left = here - eyePosition(vPlace - vec2(texel.x, 0.0));
  vec3 up = eyePosition(vPlace + vec2(0.0, texel.y)) - here;
  vec3 down = here - eyePosition(vPlace - vec2(0.0, texel.y));
  vec3 alongX = abs(right.z) < abs(left.z) ? right : left;
  vec3 alongY = abs(up.z) < abs(down.z) ? up : down;
  vec3 normal = normalize(cross(alongX, alongY));
  float angle = fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715)))) * 6.2831853;
  float reach = min(uReach, -here.z * 0.25);
  float closed = 0.0;
  const int kSamples = 20;
  for (int i = 0; i < kSamples; ++i) {
    float part = (float(i) + 0.5) / float(kSamples);
    float turn = angle + float(i) * 2.3999632;
    float height = 0.15 + 0.85 * fract(part * 7.31);
    vec3 direction = vec3(cos(turn) * sqrt(1.0 - height * height),
                          sin(turn) * sqrt(1.0 - height * height), height);
    vec3 side = normalize(abs(normal.z) < 0.99 ? cross(normal, vec3(0, 0, 1)) : vec3(1, 0, 0));
    vec3 sampled = here + (side * direction.x + cross(normal, side) * direction.y +
                           normal * direction.z) * reach * mix(0.08, 1.0, part * part);
    vec4 clip = uEyeToClip * vec4(sampled, 1.0);
    vec2 place = clip.xy / clip.w * 0.5 + 0.5;
    float depth = eyePosition(place).z;
    float inReach = smoothstep(0.0, 1.0, reach / max(abs(here.z - depth), 1e-6));
    closed += depth > sampled.z + reach * 0.02 - here.z * 0.001 ? inReach : 0.0;
  }
  oOpen = pow(clamp(1.0 - closed / float(kSamples), 0.0, 1.0), 1.3);
}
)";
}

std::string BlurFragment() {
  return std::string(kVersion) + R"(
in vec2 vPlace;
uniform sampler2D uOpen;
uniform sampler2D uDepth;
uniform vec2 uPlanes;
out float oOpen;
float away(vec2 place) {
  float depth = texture(uDepth, place).r * 2.0 - 1.0;
  return 2.0 * uPlanes.x * uPlanes.y / (uPlanes.y + uPlanes.x - depth * (uPlanes.y - uPlanes.x));
}
void main() {
  vec2 texel = 1.0 / vec2(textureSize(uOpen, 0));
  float here = away(vPlace);
  float sum = 0.0, weights = 0.0;
  for (int y = -2; y <= 2; ++y) {
    for (int x = -2; x <= 2; ++x) {
      vec2 place = vPlace + vec2(x, y) * texel;
      float weight = exp(-abs(away(place) - here) / (here * 0.01));
      sum += texture(uOpen, place).r * weight;
      weights += weight;
    }
  }
  oOpen = sum / weights;
}
)";
}

std::string BrightFragment() {
  return std::string(kVersion) + R"(
uniform sampler2D uLight;
uniform int uFactor;
out vec4 oColor;
void main() {
  ivec2 first = ivec2(gl_FragCoord.xy) * uFactor;
  vec3 sum = vec3(0.0);
  for (int y = 0; y < uFactor; y += 2) {
    for (int x = 0; x < uFactor; x += 2) {
      sum += min(max(texelFetch(uLight, first + ivec2(x, y), 0).rgb - 1.3, 0.0), vec3(4.0));
    }
  }
  oColor = vec4(sum * 4.0 / float(uFactor * uFactor), 1.0);
}
)";
}

std::string GlowFragment() {
  return std::string(kVersion) + R"(
in vec2 vPlace;
uniform sampler2D uBright;
out vec4 oColor;
void main() {
  vec2 texel = 1.0 / vec2(textureSize(uBright, 0));
  vec3 sum = vec3(0.0);
  float weights = 0.0;
  for (int y = -6; y <= 6; ++y) {
    for (int x = -6; x <= 6; ++x) {
      float weight = exp(-float(x * x + y * y) / 14.0);
      sum += texture(uBright, vPlace + vec2(x, y) * texel).rgb * weight;
      weights += weight;
    }
  }
  oColor = vec4(sum / weights * 0.35, 1.0);
}
)";
}

std::string DevelopFragment() {
  return std::string(kVersion) + R"(
in vec2 vPlace;
uniform sampler2D uLight;
uniform sampler2D uGlow;
uniform int uFactor;
out vec4 oColor;
vec3 develop(vec3 light) {
  // Straight up to middle grey, then a shoulder, so that colours stay as they were painted.
  vec3 x = max(light, 0.0);
  vec3 shoulder = 1.0 - exp(-(x - 0.55) / 0.45) * 0.45;
  vec3 shown = mix(x, shoulder, step(0.55, x));
  return mix(shown * 12.92, 1.055 * pow(max(shown, 1e-5), vec3(1.0 / 2.4)) - 0.055,
             step(0.0031308, shown));
}
void main() {
  ivec2 first = ivec2(gl_FragCoord.xy) * uFactor;
  vec3 glow = texture(uGlow, vPlace).rgb;
  vec3 sum = vec3(0.0);
  for (int y = 0; y < uFactor; ++y) {
    for (int x = 0; x < uFactor; ++x) {
      sum += develop(texelFetch(uLight, first + ivec2(x, y), 0).rgb + glow);
    }
  }
  oColor = vec4(sum / float(uFactor * uFactor), 1.0);
}
)";
}

}  // namespace kvpicture::shaders
