module QuellixLive
  # Of the list of materials.
  class MaterialsWatcher < Sketchup::MaterialsObserver
    extend Watching

    tells(:onMaterialAdd) { |watch, _, material| watch.add_material(material) }
    tells(:onMaterialChange) { |watch, _, material| watch.material(material) }
    tells(:onMaterialRemove) { |watch, _, material| watch.remove_material(material) }
    tells(:onMaterialRemoveAll, :onMaterialUndoRedo) { |watch, *| watch.everything }
  end
end
