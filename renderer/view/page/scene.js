// The scene as the page has it: meshes, who shows them where, and the objects of three.js for that.
import * as THREE from "three";
import { Materials, Textures } from "./materials.js";

const FACES_CAMERA = 1;
const FLOATS = 10;
const MIRROR = new THREE.Matrix4().makeScale(-1, 1, 1);

/** All placements of a mesh that mirror it, or all that do not: drawn together. */
class Placements {
  constructor(group, mirrored) {
    this.group = group;
    this.mirrored = mirrored;
    this.items = [];
    this.objects = [];
    this.matrices = new THREE.InstancedBufferAttribute(new Float32Array(0), 16);
  }

  add(item) {
    item.at = this.items.length;
    item.placements = this;
    this.items.push(item);
    if (this.items.length > this.matrices.count) this.#grow();
    this.write(item, item.matrix);
    this.#changed();
  }

  remove(item) {
    const last = this.items.pop();
    if (last !== item) {
      this.items[last.at = item.at] = last;
      this.write(last, last.matrix);
    }
    this.#changed();
  }

  /** three.js turns the triangles of an object that mirrors, so what mirrors has an object that does. */
  write(item, matrix) {
    const drawn = this.mirrored ? matrix.clone().premultiply(MIRROR) : matrix;
    drawn.toArray(this.matrices.array, item.at * 16);
    this.matrices.needsUpdate = true;
  }

  /** `draws`: `[{geometry, material}]`. */
  setDraws(draws) {
    this.draws = draws;
    this.#dropObjects();
    if (this.matrices.count > 0) this.#makeObjects();
  }

  dispose() {
    this.#dropObjects();
  }

  #grow() {
    const array = new Float32Array(Math.max(1, this.items.length * 2 - 2) * 16);
    array.set(this.matrices.array);
    this.matrices = new THREE.InstancedBufferAttribute(array, 16);
    this.#dropObjects();
    this.#makeObjects();
  }

  #makeObjects() {
    for (const { geometry, material, seeThrough } of this.draws) {
      const object = new THREE.InstancedMesh(geometry, material, 0);
      object.instanceMatrix = this.matrices;
      object.castShadow = !seeThrough;
      object.receiveShadow = true;
      object.matrixAutoUpdate = false;
      if (this.mirrored) object.matrix.copy(MIRROR);
      object.userData.placements = this;
      this.objects.push(object);
      this.group.add(object);
    }
    this.#changed();
  }

  #dropObjects() {
    for (const object of this.objects) {
      this.group.remove(object);
      object.dispose();
    }
    this.objects = [];
  }

  #changed() {
    for (const object of this.objects) {
      object.count = this.items.length;
      object.visible = object.count > 0;
      object.boundingSphere = null;
      object.boundingBox = null;
    }
  }
}

/** A mesh: its geometry seen from the front and, where that differs, from the back. */
class Mesh {
  /** `buffer`: a binary frame of kind 1. */
  constructor(buffer, group, materials) {
    const header = new Uint32Array(buffer, 0, 8);
    this.number = header[1];
    this.id = new DataView(buffer).getBigUint64(8, true).toString();
    this.vertexCount = header[4];
    this.triangleCount = header[5];
    this.facesCamera = (header[7] & FACES_CAMERA) !== 0;
    this.materials = materials;
    this.slots = new Array(header[6]).fill(null);
    this.vertices = new Float32Array(buffer, 32, this.vertexCount * FLOATS);
    this.#sortTriangles(new Uint32Array(buffer, 32 + 40 * this.vertexCount, this.triangleCount * 5));
    this.#makeGeometry();
    this.plain = new Placements(group, false);
    this.mirrored = new Placements(group, true);
    this.refresh();
  }

  placementsFor(matrix) { return matrix.determinant() < 0 ? this.mirrored : this.plain; }

  /** The slots name other materials, or these look different. */
  refresh() {
    const draws = new Map();
    const use = (range, uv, side, key) => {
      if (this.materials.invisible(key)) return;
      const seeThrough = this.materials.seeThrough(key);
      const name = `${uv} ${seeThrough}`;
      if (!draws.has(name)) draws.set(name, { uv, seeThrough, ranges: [], material: [] });
      const draw = draws.get(name);
      draw.ranges.push(range);
      draw.material.push(this.materials.get(key, side));
    };
    for (const range of this.ranges) {
      const front = this.slots[range.front], back = this.slots[range.back];
      if (front === back && (range.sameUv || !this.materials.textured(front))) {
        use(range, "front", "both", front);
      } else {
        use(range, "front", "front", front);
        use(range, "back", "back", back);
      }
    }
    this.#dropDraws();
    this.draws = [...draws.values()];
    for (const draw of this.draws) {
      draw.geometry = this.#geometryFor(draw.uv);
      draw.ranges.forEach(({ start, count }, i) => draw.geometry.addGroup(start, count, i));
      draw.geometry.userData.ranges = draw.ranges;
    }
    this.plain.setDraws(this.draws);
    this.mirrored.setDraws(this.draws);
  }

  dispose() {
    this.plain.dispose();
    this.mirrored.dispose();
    this.#dropDraws();
  }

  // Triangles with the same two slots follow each other.
  #sortTriangles(triangles) {
    const bySlots = new Map();
    for (let t = 0; t < this.triangleCount; ++t) {
      const front = triangles[t * 5 + 3], back = triangles[t * 5 + 4];
      const name = front * this.slots.length + back;
      let range = bySlots.get(name);
      if (!range) bySlots.set(name, range = { front, back, count: 0, sameUv: true });
      range.count += 3;
    }
    this.ranges = [...bySlots.values()];
    let start = 0;
    for (const range of this.ranges) {
      range.start = range.end = start;
      start += range.count;
    }
    this.indices = new Uint32Array(this.triangleCount * 3);
    for (let t = 0; t < this.triangleCount; ++t) {
      const range = bySlots.get(triangles[t * 5 + 3] * this.slots.length + triangles[t * 5 + 4]);
      for (let corner = 0; corner < 3; ++corner) {
        const vertex = triangles[t * 5 + corner];
        this.indices[range.end++] = vertex;
        const uv = vertex * FLOATS + 6;
        range.sameUv &&= this.vertices[uv] === this.vertices[uv + 2] && this.vertices[uv + 1] === this.vertices[uv + 3];
      }
    }
  }

  #makeGeometry() {
    this.buffer = new THREE.InterleavedBuffer(this.vertices, FLOATS);
    this.index = new THREE.BufferAttribute(this.indices, 1);
    const position = new THREE.InterleavedBufferAttribute(this.buffer, 3, 0);
    this.box = new THREE.Box3().setFromBufferAttribute(position);
    this.sphere = this.box.getBoundingSphere(new THREE.Sphere());
    this.attributes = { position, normal: new THREE.InterleavedBufferAttribute(this.buffer, 3, 3),
      front: new THREE.InterleavedBufferAttribute(this.buffer, 2, 6), back: new THREE.InterleavedBufferAttribute(this.buffer, 2, 8) };
  }

  #geometryFor(uv) {
    const geometry = new THREE.BufferGeometry();
    geometry.setIndex(this.index);
    geometry.setAttribute("position", this.attributes.position);
    geometry.setAttribute("normal", this.attributes.normal);
    geometry.setAttribute("uv", this.attributes[uv]);
    geometry.boundingBox = this.box;
    geometry.boundingSphere = this.sphere;
    return geometry;
  }

  #dropDraws() {
    for (const draw of this.draws ?? []) draw.geometry.dispose();
  }
}

/** Everything that the renderer told of meshes, materials and placements. */
export class Scene {
  constructor(anisotropy) {
    this.group = new THREE.Group();
    this.textures = new Textures(anisotropy);
    this.materials = new Materials(this.textures);
    this.meshes = new Map();
    this.owners = new Map();
    this.bounds = new THREE.Box3();
    this.boundsDue = false;
  }

  clear() {
    for (const mesh of this.meshes.values()) mesh.dispose();
    this.meshes.clear();
    this.owners.clear();
    this.materials.clear();
    this.textures.clear();
    this.boundsDue = true;
  }

  addBinary(buffer) {
    const [kind] = new Uint32Array(buffer, 0, 1);
    if (kind === 2) return this.textures.add(buffer);
    const mesh = new Mesh(buffer, this.group, this.materials);
    this.meshes.set(mesh.number, mesh);
  }

  /** The part of an `update` that concerns the scene; true when anything of it changed. */
  apply(update) {
    const { materials = [], meshes = [], placements = [], removedOwners = [], removedMaterials = [],
      removedMeshes = [], removedTextures = [] } = update;
    const looks = new Set([...materials.map(({ key }) => key), ...removedMaterials]);
    const refreshed = new Set();
    for (const material of materials) this.materials.set(material);
    for (const { mesh, slots } of meshes) {
      const found = this.meshes.get(mesh);
      if (!found) continue;
      found.slots = slots;
      refreshed.add(found);
    }
    for (const change of placements) this.#place(change);
    for (const owner of removedOwners) this.#place({ owner, from: 0, items: [] });
    for (const key of removedMaterials) this.materials.remove(key);
    for (const number of removedMeshes) {
      refreshed.delete(this.meshes.get(number));
      this.meshes.get(number)?.dispose();
      this.meshes.delete(number);
    }
    for (const number of removedTextures) this.textures.remove(number);
    if (looks.size > 0) {
      for (const mesh of this.meshes.values()) if (mesh.slots.some((key) => looks.has(key))) refreshed.add(mesh);
    }
    for (const mesh of refreshed) mesh.refresh();
    if (placements.length + removedOwners.length > 0) this.boundsDue = true;
    return refreshed.size + looks.size + placements.length + removedOwners.length > 0;
  }

  #place({ owner, from, items }) {
    const had = this.owners.get(owner) ?? [];
    for (const item of had.splice(from)) item.placements.remove(item);
    for (const [number, ...numbers] of items) {
      const mesh = this.meshes.get(number);
      if (!mesh) throw new Error(`a placement names mesh ${number}, which never came`);
      const item = { owner, mesh, matrix: new THREE.Matrix4().fromArray(numbers) };
      had.push(item);
      mesh.placementsFor(item.matrix).add(item);
    }
    if (had.length > 0) this.owners.set(owner, had);
    else this.owners.delete(owner);
  }

  /** Turns what faces the camera: its -Y side is towards the eye. */
  turnTo(eye) {
    const turn = new THREE.Matrix4();
    const seen = new THREE.Vector3();
    for (const mesh of this.meshes.values()) {
      if (!mesh.facesCamera) continue;
      for (const placements of [mesh.plain, mesh.mirrored]) {
        for (const item of placements.items) {
          seen.copy(eye).applyMatrix4(turn.copy(item.matrix).invert());
          turn.makeRotationZ(Math.atan2(seen.x, -seen.y));
          placements.write(item, turn.premultiply(item.matrix));
        }
      }
    }
  }

  /** The box around everything that is shown. */
  box() {
    if (!this.boundsDue) return this.bounds;
    this.bounds.makeEmpty();
    const one = new THREE.Box3();
    for (const mesh of this.meshes.values()) {
      for (const { items } of [mesh.plain, mesh.mirrored]) {
        for (const item of items) this.bounds.union(one.copy(mesh.box).applyMatrix4(item.matrix));
      }
    }
    this.boundsDue = false;
    return this.bounds;
  }

  counts() {
    let placements = 0, triangles = 0;
    for (const mesh of this.meshes.values()) {
      const times = mesh.plain.items.length + mesh.mirrored.items.length;
      placements += times;
      triangles += times * mesh.triangleCount;
    }
    return { meshes: this.meshes.size, materials: this.materials.size, textures: this.textures.size,
      owners: this.owners.size, placements, triangles };
  }

  /** What a ray of `raycaster` meets first: owner, mesh and material as the wire names them; or null. */
  pick(raycaster) {
    const [hit] = raycaster.intersectObject(this.group, true);
    if (!hit) return null;
    const placements = hit.object.userData.placements;
    const item = placements.items[hit.instanceId];
    const range = hit.object.geometry.userData.ranges[hit.face.materialIndex];
    const toWorld = new THREE.Matrix3().getNormalMatrix(item.matrix);
    const fromFront = hit.face.normal.clone().applyMatrix3(toWorld).dot(raycaster.ray.direction) < 0;
    const key = item.mesh.slots[fromFront ? range.front : range.back];
    const material = this.materials.record(key);
    return { owner: item.owner, mesh: item.mesh.number, meshId: item.mesh.id, triangles: item.mesh.triangleCount,
      side: fromFront ? "front" : "back", material: key, materialName: material?.name ?? null, point: hit.point.toArray() };
  }
}
