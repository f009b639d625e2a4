module QuellixLive
  # Of operations, and of the model as a whole. What undo and redo change is not told one by one.
  class ModelWatcher < Sketchup::ModelObserver
    extend Watching

    tells(:onTransactionStart) { |watch, *| watch.operation = true }
    tells(:onTransactionCommit, :onTransactionEmpty) { |watch, *| watch.operation = false }
    tells(:onTransactionAbort, :onTransactionUndo, :onTransactionRedo) do |watch, *|
      watch.operation = false
      watch.relearn
    end
    tells(:onActivePathChanged) { |watch, *| watch.path_changed }
    tells(:onEraseAll) { |watch, *| watch.relearn }
    tells(:onDeleteModel) { |watch, *| watch.closed }
    tells(:onPostSaveModel) { |watch, *| watch.saved }
  end
end
