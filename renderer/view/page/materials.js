// Textures and materials as they came over the wire, and what three.js draws with.
import * as THREE from "three";

const ROUGH = { dull: 0.85, blurred: 0.4, sharp: 0.08 };
const SIDES = { front: THREE.FrontSide, back: THREE.BackSide, both: THREE.DoubleSide };

export class Textures {
  #all = new Map();

  constructor(anisotropy) {
    this.anisotropy = anisotropy;
  }

  get size() { return this.#all.size; }

  /** A binary frame of kind 2. */
  add(buffer) {
    const [, number, width, height] = new Uint32Array(buffer, 0, 4);
    this.#all.set(number, { pixels: new Uint8Array(buffer, 32, 4 * width * height), width, height });
  }

  remove(number) {
    const texture = this.#all.get(number);
    texture?.color?.dispose();
    texture?.data?.dispose();
    this.#all.delete(number);
  }

  /** For colours, or for plain numbers; null without one. The same pixels may be used as both. */
  get(number, use) {
    const texture = this.#all.get(number);
    if (!texture) return null;
    if (!texture[use]) {
      const made = new THREE.DataTexture(texture.pixels, texture.width, texture.height);
      made.colorSpace = use === "color" ? THREE.SRGBColorSpace : THREE.NoColorSpace;
      made.wrapS = made.wrapT = THREE.RepeatWrapping;
      made.magFilter = THREE.LinearFilter;
      made.minFilter = THREE.LinearMipmapLinearFilter;
      made.generateMipmaps = true;
      made.anisotropy = this.anisotropy;
      made.needsUpdate = true;
      texture[use] = made;
    }
    return texture[use];
  }

  clear() {
    for (const number of [...this.#all.keys()]) this.remove(number);
  }
}

/** Materials by their key. What three.js draws with stays the same object while its values change. */
export class Materials {
  #records = new Map();
  #drawn = new Map();

  constructor(textures) {
    this.textures = textures;
  }

  get size() { return this.#records.size; }
  record(key) { return this.#records.get(key); }

  set(record) {
    this.#records.set(record.key, record);
    this.#refresh(record.key);
  }

  remove(key) {
    this.#records.delete(key);
    this.#refresh(key);
  }

  clear() {
    for (const sides of this.#drawn.values()) for (const material of Object.values(sides)) material.dispose();
    this.#drawn.clear();
    this.#records.clear();
  }

  /** Whether texture coordinates matter. */
  textured(key) {
    const record = this.#records.get(key);
    return !!record && ["texture", "metallicTexture", "roughnessTexture", "normalTexture"].some(
      (name) => record[name] !== null && record[name] !== undefined);
  }

  seeThrough(key) { return this.#records.get(key)?.alphaMode === "BLEND"; }

  invisible(key) {
    const record = this.#records.get(key);
    return !!record && (record.hidden || opacityOf(record) <= 0);
  }

  /** `side`: "front", "back" or "both". An unknown key, or none, is grey. */
  get(key, side) {
    let sides = this.#drawn.get(key);
    if (!sides) this.#drawn.set(key, sides = {});
    if (!sides[side]) this.#fill(sides[side] = new THREE.MeshStandardMaterial({ side: SIDES[side] }), key);
    return sides[side];
  }

  #refresh(key) {
    for (const material of Object.values(this.#drawn.get(key) ?? {})) this.#fill(material, key);
  }

  #fill(material, key) {
    const record = this.#records.get(key);
    material.shadowSide = THREE.DoubleSide;
    material.forceSinglePass = true;
    material.map = material.metalnessMap = material.roughnessMap = material.normalMap = material.emissiveMap = null;
    material.emissive.setRGB(0, 0, 0);
    if (!record) {
      material.color.setRGB(0.5, 0.5, 0.5);
      Object.assign(material, { metalness: 0, roughness: 1, opacity: 1, transparent: false, alphaTest: 0, depthWrite: true });
    } else {
      this.#fillKnown(material, record);
    }
    material.needsUpdate = true;
  }

  #fillKnown(material, record) {
    material.map = this.textures.get(record.texture, "color");
    if (record.kind === "pbr") this.#fillPbr(material, record);
    else this.#fillClassic(material, record);
    material.opacity = opacityOf(record);
    material.transparent = record.alphaMode === "BLEND";
    material.depthWrite = !material.transparent;
    material.alphaTest = record.alphaMode === "MASK" ? 0.5 : 0;
    if (record.lightPower > 0) {
      material.emissiveMap = material.map;
      if (material.map) material.emissive.setRGB(1, 1, 1);
      else material.emissive.setRGB(...(record.baseColor ?? record.diffuseColor), THREE.SRGBColorSpace);
      material.emissiveIntensity = record.lightPower;
    }
  }

  #fillPbr(material, record) {
    if (material.map) material.color.setRGB(1, 1, 1);
    else material.color.setRGB(...record.baseColor, THREE.SRGBColorSpace);
    material.metalness = THREE.MathUtils.clamp(record.metallic, 0, 1);
    material.roughness = THREE.MathUtils.clamp(record.roughness, 0, 1);
    material.metalnessMap = this.textures.get(record.metallicTexture, "data");
    material.roughnessMap = this.textures.get(record.roughnessTexture, "data");
    material.normalMap = this.textures.get(record.normalTexture, "data");
    material.normalScale.setScalar(record.normalScale);
  }

  #fillClassic(material, record) {
    if (material.map) material.color.setRGB(1, 1, 1);
    else material.color.setRGB(...record.diffuseColor, THREE.SRGBColorSpace);
    material.color.multiplyScalar(material.map ? THREE.MathUtils.clamp(record.diffuse, 0, 1) : record.diffuse);
    material.metalness = record.type === "Metallic" ? 1 : 0;
    material.roughness = record.reflection <= 0 ? ROUGH.dull : record.reflectionBlur ? ROUGH.blurred : ROUGH.sharp;
  }
}

function opacityOf(record) {
  return THREE.MathUtils.clamp(record.kind === "pbr" ? 1 - record.transparency : record.opacity, 0, 1);
}
