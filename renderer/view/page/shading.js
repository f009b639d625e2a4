// How the page shades: the same sun, sky and development of the light as the renderer's own pictures, so
// that a colour means the same in both.
import * as THREE from "three";

export const SUNLIGHT = 3.6;
const SKYLIGHT = 0.62;
const REFLECTED = 0.8;
// A light of power 1 lights what is so many host units away like a full white surface.
const LIGHT_REACH = 60;

function patch(chunk, from, to) {
  const text = THREE.ShaderChunk[chunk];
  if (!text.includes(from)) throw new Error(`the shader ${chunk} is not the one that this page was written for`);
  THREE.ShaderChunk[chunk] = text.replace(from, to);
}

// Straight up to middle grey, then a shoulder, so that colours stay as they were painted.
patch("tonemapping_pars_fragment", "vec3 CustomToneMapping( vec3 color ) { return color; }",
  `vec3 CustomToneMapping( vec3 color ) {
    vec3 x = max( color, 0.0 );
    return mix( x, 1.0 - exp( -( x - 0.55 ) / 0.45 ) * 0.45, step( 0.55, x ) );
  }`);
// The sky's diffuse light is a hemisphere light here; the environment gives the reflections.
patch("lights_fragment_maps", "iblIrradiance += getIBLIrradiance( geometryNormal );", "");
// Metallic textures keep their value in the same channel as those for roughness.
patch("metalnessmap_fragment", "texelMetalness.b", "texelMetalness.g");
// Placements may shear; this is right for these too, and for what is flat.
patch("defaultnormal_vertex",
  `transformedNormal /= vec3( dot( im[ 0 ], im[ 0 ] ), dot( im[ 1 ], im[ 1 ] ), dot( im[ 2 ], im[ 2 ] ) );
	transformedNormal = im * transformedNormal;`,
  `transformedNormal = mat3( cross( im[ 1 ], im[ 2 ] ), cross( im[ 2 ], im[ 0 ] ), cross( im[ 0 ], im[ 1 ] ) ) *
    transformedNormal;`);

const SKY_VERTEX = `
  varying vec3 vDirection;
  void main() {
    vDirection = position;
    gl_Position = projectionMatrix * mat4( mat3( modelViewMatrix ) ) * vec4( position, 1.0 );
    gl_Position.z = gl_Position.w * 0.99999;
  }`;
const SKY_FRAGMENT = `
  uniform vec3 zenith;
  uniform vec3 horizon;
  uniform vec3 ground;
  uniform float reflected;
  varying vec3 vDirection;
  void main() {
    float height = normalize( vDirection ).z;
    vec3 below = mix( horizon * mix( 1.0, 0.82, smoothstep( 0.0, -0.5, height ) ), ground, reflected );
    vec3 above = mix( horizon, zenith, 1.0 - exp( -3.5 * max( height, 0.0 ) ) );
    gl_FragColor = vec4( mix( below, above, smoothstep( -0.02 * reflected, 0.02 * reflected + 1e-6, height ) ), 1.0 );
    #include <tonemapping_fragment>
    #include <colorspace_fragment>
  }`;

function skyDome(colors, reflected) {
  const material = new THREE.ShaderMaterial({
    uniforms: { ...colors, reflected: { value: reflected } }, vertexShader: SKY_VERTEX, fragmentShader: SKY_FRAGMENT,
    side: THREE.DoubleSide, depthWrite: false, depthTest: false, toneMapped: !reflected,
  });
  const dome = new THREE.Mesh(new THREE.SphereGeometry(1, 48, 32), material);
  dome.frustumCulled = false;
  dome.renderOrder = -2;
  return dome;
}

/** Sky, ground and what light comes from them, for a background colour. */
export class Surroundings {
  constructor(renderer, scene) {
    this.renderer = renderer;
    this.scene = scene;
    this.colors = { zenith: { value: new THREE.Color() }, horizon: { value: new THREE.Color() },
      ground: { value: new THREE.Color() } };
    this.hemisphere = new THREE.HemisphereLight(0xffffff, 0xffffff, SKYLIGHT * Math.PI);
    this.hemisphere.position.set(0, 0, 1);
    this.ground = this.#makeGround();
    scene.add(skyDome(this.colors, 0), this.hemisphere, this.ground);
    scene.environmentIntensity = REFLECTED;
    this.setBackground([0.55, 0.7, 0.88]);
  }

  /** `color`: three numbers of 0 to 1, as on the screen. */
  setBackground(color) {
    const { zenith, horizon, ground } = this.colors;
    const light = new THREE.Color().setRGB(...color, THREE.SRGBColorSpace);
    // Even a black background leaves some light in the room, or nothing would be seen.
    light.setRGB(Math.max(light.r, 0.12), Math.max(light.g, 0.12), Math.max(light.b, 0.12));
    zenith.value.copy(light).multiplyScalar(0.92);
    horizon.value.copy(light).lerp(new THREE.Color(1, 1, 1), 0.62);
    ground.value.copy(horizon.value).multiplyScalar(0.45).lerp(new THREE.Color(0.4, 0.375, 0.33), 0.75);

    const above = horizon.value.clone().lerp(zenith.value, 0.5);
    const grey = 0.21 * above.r + 0.72 * above.g + 0.07 * above.b;
    this.hemisphere.color.copy(above.lerp(new THREE.Color(grey, grey, grey), 0.35));
    this.hemisphere.groundColor.copy(ground.value).multiplyScalar(0.6);
    this.ground.material.color.copy(ground.value).multiplyScalar(0.95);
    this.#reflect();
  }

  /** The ground lies below the box `bounds`, and is seen from above only. */
  place(bounds, eye) {
    this.ground.visible = !bounds.isEmpty() && eye.z > bounds.min.z;
    if (!this.ground.visible) return;
    const center = bounds.getCenter(new THREE.Vector3());
    const radius = Math.max(bounds.getSize(new THREE.Vector3()).length() / 2, 1e-3) * 7;
    this.ground.position.set(center.x, center.y, bounds.min.z - radius * 2e-4);
    this.ground.scale.setScalar(radius);
  }

  #reflect() {
    const maker = new THREE.PMREMGenerator(this.renderer);
    const sky = new THREE.Scene();
    const dome = skyDome(this.colors, 1);
    sky.add(dome);
    this.environment?.dispose();
    this.environment = maker.fromScene(sky, 0, 0.1, 10);
    this.scene.environment = this.environment.texture;
    dome.geometry.dispose();
    dome.material.dispose();
    maker.dispose();
  }

  // A disc that fades into the distance.
  #makeGround() {
    const rings = 40;
    const geometry = new THREE.RingGeometry(0, 1, 64, rings);
    const position = geometry.getAttribute("position");
    const colors = new Float32Array(position.count * 4).fill(1);
    for (let i = 0; i < position.count; ++i) {
      const away = Math.hypot(position.getX(i), position.getY(i));
      colors[i * 4 + 3] = 1 - THREE.MathUtils.smoothstep(away, 0.35, 1);
    }
    geometry.setAttribute("color", new THREE.BufferAttribute(colors, 4));
    const ground = new THREE.Mesh(geometry, new THREE.MeshStandardMaterial({
      roughness: 0.95, transparent: true, depthWrite: false, vertexColors: true }));
    ground.receiveShadow = true;
    ground.renderOrder = -1;
    ground.raycast = () => {};
    return ground;
  }
}

/** A light of the scene, as an object of three.js; null for one that is dark. */
export function makeLamp({ kind, color, position, direction, wideBeamAngle, beamAngle }) {
  const power = Math.max(...color);
  if (!(power > 0)) return null;
  const tint = new THREE.Color().setRGB(...color.map((part) => Math.max(part, 0) / power), THREE.SRGBColorSpace);
  const intensity = power * LIGHT_REACH * LIGHT_REACH * Math.PI;
  const lamp = kind === "spot" ? new THREE.SpotLight(tint, intensity) : new THREE.PointLight(tint, intensity);
  lamp.position.set(...position);
  if (kind === "spot") {
    lamp.angle = THREE.MathUtils.clamp(wideBeamAngle, 0.01, Math.PI / 2);
    lamp.penumbra = THREE.MathUtils.clamp(1 - beamAngle / lamp.angle, 0.02, 1);
    lamp.target.position.set(...position).add(new THREE.Vector3(...direction));
  }
  return lamp;
}
