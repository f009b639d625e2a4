require_relative "page"

PAGE_USE_CAMERA = 1
PAGE_USE_RENDERING_OPTIONS = 2
PAGE_USE_SHADOWINFO = 4
PAGE_USE_HIDDEN = 16
PAGE_USE_LAYER_VISIBILITY = 32
PAGE_USE_ALL = 0xffff

module ModelHost
  # The scenes of a model, in order.
  class Pages
    include Enumerable
    include Observed

    attr_reader :selected_page

    def initialize(model)
      @model = model
      @pages = []
    end

    def _model = @model
    def model = @model
    def parent = @model
    def _observed = :pages
    def each(&block) = @pages.dup.each(&block)
    def length = @pages.length
    alias size length
    def count(*arguments, &block) = arguments.empty? && !block ? length : super

    # By number or name.
    def [](key) = key.is_a?(Integer) ? @pages[key] : @pages.find { |page| page.name == key }

    # Keeps what the model shows now; with a name that is taken a number follows it.
    def add(name = nil, flags = PAGE_USE_ALL, index = @pages.size)
      page = Page.new(self, free_name(name || "Scene #{@pages.size + 1}"), flags)
      flip_page(page, index.clamp(0, @pages.size))
      page
    end

    def erase(page)
      index = @pages.index(page) or return false
      flip_page(page, index)
      true
    end

    # Shows a page: its camera, shadows, layers and options.
    def selected_page=(page)
      raise ArgumentError, "the page is not one of these" unless page.nil? || @pages.include?(page)
      @selected_page = page
      page&._show
      @model.history.tell_now(:pages, :onContentsModified, self)
    end

    # What its pages tell that has changed.
    def _changed = @model.history.tell(:pages, :onContentsModified, self)

    private

    def free_name(wish)
      taken = map(&:name)
      return wish unless taken.include?(wish)
      (1..).lazy.map { |n| "#{wish}##{n}" }.find { |name| !taken.include?(name) }
    end

    # Puts it in or takes it out, whichever it is not.
    def flip_page(page, index)
      history = @model.history
      history.apply do
        if @pages.include?(page)
          @pages.delete(page)
          @selected_page = nil if @selected_page == page
          history.tell(:pages, :onElementRemoved, self, page)
        else
          @pages.insert(index, page)
          history.tell(:pages, :onElementAdded, self, page)
        end
        _changed
      end
    end
  end
end
