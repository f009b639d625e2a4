# The table of docs/edits.md, row by row: each edit alone, with the calls that the page names for it,
# leads to what a fresh export shows. Where the page names calls, an export without them does not.

require_relative "helper"
require_relative "edited_model"

class EditsTest < LinkTest
  WATCHDOG_SECONDS = 240
  SEED = Integer(ENV.fetch("SEED", Random.new_seed.to_s)) % (1 << 32)
  TRIES = 4
  # For an edit that by chance made no difference in those.
  MOST_TRIES = 20
  MESH_PER_PAINT = !["", "0"].include?(ENV["QUELLIX_MESH_PER_PAINT"].to_s)
  UNEVEN = ["Red", "Blue"].freeze
  EVEN = [[nil, nil], ["Red", "Red"]].freeze
  PAGE = File.expand_path("../../docs/edits.md", __dir__)
  TABLE = File.readlines(PAGE, chomp: true, encoding: "UTF-8").grep(/^\| (?!edit )/).map { |line| line[2..-3].split(" | ") }

  # The rows of the page in its order, and the edits that each is made of, which a model executes.
  EDITS = {
    "top-level instance or group moved, turned, scaled" => [
      -> { change_top { |item| item.transform!(shift) } },
      -> { change_top { |item| item.transform!(turn) } },
      -> { change_top { |item| item.transform!(scale) } }
    ],
    "the same, but its mesh may be sent again" => [-> { change_top { |item| item.transform!(shift * turn) } }],
    "top-level instance or group painted" => [
      -> { change_top { |item| item.material = other_than(item.material) } },
      -> { change_top(any(top.select(&:material))) { |item| item.material = nil } }
    ],
    "the same with `QUELLIX_MESH_PER_PAINT`" => [-> { change_top { |item| item.material = other_than(item.material) } }],
    "top-level instance or group hidden, shown, put on another layer, added, erased, made unique" => [
      -> { change_top(any(top.reject(&:hidden?))) { |item| item.hidden = true } },
      -> { change_top(any(top.select(&:hidden?))) { |item| item.hidden = false } },
      -> { change_top { |item| item.layer = unseen } },
      -> { change_top(any(top.select(&:layer))) { |item| item.layer = layer } },
      -> { part = any(parts); @model.entities.add_instance(part, shift).material = at_root(part).first.material },
      -> { square(@model.entities.add_group.entities) },
      -> { any(top).erase! },
      -> { make_unique(any(top)) }
    ],
    "nested instance or group moved, painted, hidden, shown, put on another layer, added, erased" => [
      -> { change { |item| item.transform!(shift) } },
      -> { change { |item| item.material = other_than(item.material) } },
      -> { change(any(nested.reject { |item, _| item.hidden? })) { |item| item.hidden = true } },
      -> { change(any(nested.select { |item, _| item.hidden? })) { |item| item.hidden = false } },
      -> { change { |item| item.layer = unseen } },
      -> { name(container: parts[1]); parts[1].entities.add_instance(parts[0], shift).material = material },
      -> { change(&:erase!) }
    ],
    "nested group added and filled at once" => [
      lambda do
        group = add_to(any(holders - [parts[2]])).add_group
        square(group.entities)
        group.entities.add_instance(parts[2], shift)
        square(group.entities.add_group.entities)
      end
    ],
    "face added, erased, turned, painted in front, painted behind, its texture laid anew, put on another layer, given a hole; edge made smooth" => [
      -> { square(add_to(any([nil, *holders]))) },
      -> { change(any(everywhere(:faces)), &:erase!) },
      -> { change(any(everywhere(:faces)), &:reverse!) },
      -> { change(any(everywhere(:faces))) { |face| face.material = other_than(face.material) } },
      -> { change(any(everywhere(:faces))) { |face| face.back_material = other_than(face.back_material) } },
      -> { change(any(squares)) { |face| face.position_material(material("Wood"), face.points.zip([[0, 0], [1, 0], [1, 1], [0.3, 0.9]]).flatten(1)) } },
      -> { change(any(everywhere(:faces))) { |face| face.layer = unseen } },
      -> { change(any(squares)) { |face| x, y, z = face.points.first; face.add_opening([[x + 2, y + 2, z], [x + 4, y + 2, z], [x + 4, y + 4, z]]) } },
      -> { change([parts[2].entities.faces.first, parts[2]]) { |face| face.edges.first.then { |edge| edge.soft = edge.smooth = true } } }
    ],
    "face hidden or shown" => [-> { any(everywhere(:faces))[0].hidden = true }],
    "image added, erased, moved, hidden, shown, put on another layer" => [
      -> { add_to(any([nil, *holders])).add_image(EditedModel::PICTURE, [5, 5, 5], 20) },
      -> { change(any(everywhere(:images)), &:erase!) },
      -> { change(any(everywhere(:images))) { |image| image.transformation = shift } },
      -> { change(any(everywhere(:images).reject { |image, _| image.hidden? })) { |image| image.hidden = true } },
      -> { change(any(everywhere(:images).select { |image, _| image.hidden? })) { |image| image.hidden = false } },
      -> { change(any(everywhere(:images))) { |image| image.layer = unseen } }
    ],
    "material's colour, opacity, texture, factors, attributes, name changed; material removed" => [
      -> { change_material { |changed| changed.color = Array.new(3) { draw(256) } } },
      -> { change_material { |changed| changed.alpha = 0.25 } },
      -> { change_material { |changed| changed.texture = pixels } },
      -> { change_material(material("Wood")) { |changed| changed.texture = nil } },
      -> { change_material { |changed| changed.metallic = 0.5; changed.roughness = 0.25 } },
      -> { change_material { |changed| changed.set_attribute(EditedModel::D, "reflection", 0.5) } },
      -> { change_material { |changed| changed.name = "Renamed" } },
      -> { change_material { |changed| @model.materials.remove(changed) } }
    ],
    "material added and put on a face" => [-> { change(any(everywhere(:faces))) { |face| face.material = @model.materials.add("Fresh") } }],
    "default colour of fronts" => [-> { @model.rendering_options["FaceFrontColor"] = [9, 90, 200] }],
    "default colour of backs" => [-> { @model.rendering_options["FaceBackColor"] = [9, 90, 200] }],
    "layer hidden, shown, put into another folder, removed" => [
      -> { change_layers(any([walls, fittings, deep])) { |layers| layers[0].visible = false } },
      -> { everywhere(:faces).each { |face, _| face.layer = unseen if draw(3).zero? }; rebase; change_layers(unseen) { unseen.visible = true } },
      -> { change_layers(any([walls, fittings])) { |layers| layers[0].folder = folder("Shut") } },
      -> { change_layers(any([walls, fittings])) { |layers| layers[0].visible = false; rebase; @model.layers.remove(layers[0]) } }
    ],
    "layer folder hidden or shown" => [
      -> { change_layers(fittings, deep) { folder("Outer").visible = false } },
      -> { folder("Inner").visible = false; rebase; change_layers(deep) { folder("Inner").visible = true } }
    ],
    "light or camera-facing instance at the root moved, painted, hidden, shown, added, erased; light's attributes" => [
      -> { any(at_root(tree) + at_root(lamp)).transform!(shift) },
      -> { any(at_root(tree) + at_root(lamp)).material = material },
      -> { any(at_root(tree) + at_root(lamp)).hidden = true },
      -> { any(at_root(tree) + at_root(lamp)).then { |item| item.hidden = true; rebase; item.hidden = false } },
      -> { @model.entities.add_instance(any([tree, lamp]), shift) },
      -> { any(at_root(tree) + at_root(lamp)).erase! },
      -> { at_root(lamp).first.set_attribute(EditedModel::D, "light-power", 7.0) },
      -> { nested_of(lamp).first[0].set_attribute(EditedModel::D, "light-power", 7.0) }
    ],
    "nested light added or erased" => [
      -> { change(any(nested_of(lamp)), &:erase!) },
      -> { nested_of(lamp).each { |item, _| item.erase! }; rebase; name(container: parts[2]); parts[2].entities.add_instance(lamp, shift) }
    ],
    "nested camera-facing instance moved or painted" => [
      -> { nested_of(tree).first[0].transform!(shift) },
      -> { nested_of(tree).first[0].material = material }
    ],
    "nested definition made a light, or no light; turned to the camera, or no more" => [
      -> { change_definition(parts[0]) { |part| part.set_attribute(EditedModel::D, "light-type", "point") } },
      -> { change_definition(lamp) { |part| part.set_attribute(EditedModel::D, "light-type", "") } },
      -> { change_definition(parts[0]) { |part| part.behavior.always_face_camera = true } },
      -> { change_definition(tree) { |part| part.behavior.always_face_camera = false } }
    ],
    "layer, instance, definition renamed" => [-> { [layer, any(top), any(parts)].each { |item| item.name = "Renamed" } }],
    "another value of `use_pbr`" => [-> { @model.materials.each { |changed| changed.metallic = 0.5 }; rebase; self.pbr = !pbr }],
    "another model" => [-> { @model.close; initialize(draw(1 << 20), [nil, "Red"]) }]
  }.freeze

  def test_the_page_names_the_edits_of_this_test
    assert_equal EDITS.keys, TABLE.map(&:first)
  end

  def export(edited, reload)
    link.do_import(edited.model.handle, "a.skp", reload, edited.pbr)
    link.update_cache_info
    # Sent when what went before is done, files and all.
    link.show_message("done")
    file = File.join(out, "scene-#{@exports = @exports.to_i + 1}.json")
    File.read(file).tap { File.delete(file) }
  end

  def export_all(edited)
    link.clear_reload_cache
    link.clear_model_data_for_reload
    export(edited, false)
  end

  # As the page says it: "container", or calls with what the edit has named.
  def make_calls(cell, names)
    if cell == "container"
      return names[:container] ? link.invalidate_definition(names[:container].persistent_id & 0xFFFFFFFF) : link.invalidate_geometry_cache(0)
    end
    cell.scan(/`(\w+)(?:\((.*?)\))?`/) do |method, arguments|
      values = arguments.to_s.split(", ").map { |argument| names[argument.to_sym] || Integer(argument) }
      values.first.is_a?(Array) ? values.first.each { |value| link.public_send(method, value) } : link.public_send(method, *values)
    end
  end

  # What a reload shows after the edit and its calls, and what a fresh export shows.
  def reloaded_and_fresh(edit, cell, seed, worn, uneven_too: false)
    edited = EditedModel.new(seed, worn)
    # For edits that need something else to be so before.
    edited.define_singleton_method(:rebase) { @rebased.call }
    edited.instance_variable_set(:@rebased, -> { export_all(edited) })
    export_all(edited)
    uneven = edited.uneven
    edited.instance_exec(&edit)
    make_calls(cell, edited.names)
    (uneven | edited.uneven).select(&:valid?).each { |part| link.invalidate_definition(edited.id(part)) } if uneven_too
    [export(edited, true), export_all(edited)]
  ensure
    edited&.model&.close
  end

  def each_edit
    TABLE.each do |row, cell|
      next if row.include?("MESH_PER_PAINT") && !MESH_PER_PAINT
      EDITS.fetch(row).each_with_index { |edit, i| yield edit, cell, "#{row}, edit #{i}" }
    end
  end

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    start
  end

  def assert_in_step(what, seed, (reloaded, fresh))
    assert_same_scene JSON.parse(fresh), JSON.parse(reloaded), "#{what}, SEED=#{seed}" if fresh != reloaded
    assert fresh.size > 10_000, "the scene is worth comparing"
  end

  def test_each_edit_needs_its_calls_and_no_more
    paints = MESH_PER_PAINT ? [*EVEN, UNEVEN] : EVEN
    each_edit do |edit, cell, what|
      needed = cell == "-"
      MOST_TRIES.times do |i|
        break if needed && i >= TRIES
        seed, worn = SEED + i, paints[i % paints.size]
        assert_in_step(what, seed, reloaded_and_fresh(edit, cell, seed, worn))
        needed ||= reloaded_and_fresh(edit, "-", seed, worn).uniq.size == 2
      end
      assert needed, "#{what}: the picture is right without #{cell}, SEED=#{SEED}"
    end
    link.quit
    assert_equal 0, report["faultCount"], report["faults"].first(3).inspect
  end

  # One mesh a definition: without the switch the page asks for one call more.
  def test_owners_in_different_paints
    return if MESH_PER_PAINT
    each_edit do |edit, cell, what|
      assert_in_step(what, SEED, reloaded_and_fresh(edit, cell, SEED, UNEVEN, uneven_too: true))
    end
    first_erased = -> { at_root(parts[0]).first.erase! }
    assert_equal 2, reloaded_and_fresh(first_erased, "-", SEED, UNEVEN).uniq.size, "the table alone is not enough"
  end
end

require "minitest/autorun"
