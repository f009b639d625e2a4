# What is written down about the Ruby classes: signature files are valid, name what is there and no more,
# and say the right types; the binding's page names every method.

require "minitest"
require "open3"
require "rbconfig"
require "rbs"

$LOAD_PATH.unshift(ENV.fetch("EXTENSION_DIR"), ENV.fetch("MODELHOST_DIR"), ENV.fetch("PLUGIN_DIR"))
require "Quellix"
require "modelhost"

# Names of methods by class; those of a class's singleton begin with a dot, what begins with an underscore
# is a class's own matter. With `mixed`, those of its modules too.
class Named
  def self.of(owner, mixed: false)
    own = owner.singleton_methods(false).map { |name| ".#{name}" }
    if owner.is_a?(Class)
      modules = mixed ? owner.ancestors - (owner.superclass&.ancestors || []) - [Enumerable, Comparable] : [owner]
      own += modules.flat_map { |each| each.instance_methods(false).map(&:to_s) }
    end
    own.uniq.grep_v(/\A\.?_/).sort
  end

  BINDING = [ModelHost, *ModelHost.constants.map { |name| ModelHost.const_get(name) }.grep(Class)].to_h { |owner| [owner, of(owner)] }.freeze
  NUMERIC = of(Numeric).freeze
end

require "sketchup.rb"
require "quellix_live"

class Named
  # What the host's public names add, by class.
  def self.added
    modules = [Sketchup, Geom, UI]
    named = modules.flat_map { |outer| outer.constants.map { |name| ["#{outer}::#{name}", outer.const_get(name)] } }
    owners = [ModelHost, *modules, SketchupExtension].map { |owner| [owner.name, owner] } + named.select { |_, owner| owner.is_a?(Class) }
    added = owners.uniq(&:last).to_h { |name, owner| [name, of(owner, mixed: true) - BINDING.fetch(owner, [])] }
    added["Numeric"] = of(Numeric) - NUMERIC
    added["Sketchup::Vertex"] -= %w[.[] .inspect .keyword_init? .members .new] # of every Struct
    added.reject { |_, names| names.empty? }.sort.to_h
  end
end

class SignaturesTest < Minitest::Test
  ROOT = File.expand_path("../..", __dir__)
  FILES = %w[package/quellix.rbs platform/modelhost/ruby/modelhost.rbs plugin/quellix_live.rbs].map { |file| File.join(ROOT, file) }
  PAGE = File.join(ROOT, "docs/modelhost-ruby.md")

  # { "ModelHost::Face" => ["area", …, ".new"] }; singleton methods begin with a dot.
  def self.names(declarations, outer = "")
    declarations.each_with_object({}) do |declared, found|
      case declared
      when RBS::AST::Declarations::Class, RBS::AST::Declarations::Module
        name = outer + declared.name.name.to_s
        found[name] = declared.members.flat_map { |member| member_names(member) } - ["initialize"]
        found.merge!(names(declared.members.grep(RBS::AST::Declarations::Base), "#{name}::"))
      end
    end
  end

  def self.member_names(member)
    case member
    when RBS::AST::Members::MethodDefinition then [member.kind == :singleton ? ".#{member.name}" : member.name.to_s]
    when RBS::AST::Members::AttrReader then [member.name.to_s]
    when RBS::AST::Members::AttrAccessor then [member.name.to_s, "#{member.name}="]
    else []
    end
  end

  SIGNED = FILES.map { |file| names(RBS::Parser.parse_signature(File.read(file))[2]) }.freeze

  # Every name in a class's table of the page; the table of the module is the first one.
  def on_the_page
    File.read(PAGE)[/.*?(?=^# With the host)/m].split(/^## /).drop(1).to_h do |section|
      title = section.lines.first.chomp
      names = section.scan(/^\| (`.*?`) \|/).flatten.flat_map { |cell| cell.scan(/`(\.?(?:\w+[?!=]?|\[\]=?|==|\*)?)/).flatten } - [""]
      [title == "Module" ? "ModelHost" : "ModelHost::#{title}", names.sort]
    end
  end

  def test_the_signatures_are_valid
    folders = FILES.flat_map { |file| ["-I", File.dirname(file)] }
    said, status = Open3.capture2e(RbConfig.ruby, Gem.bin_path("rbs", "rbs"), *folders, "validate")
    assert_predicate status, :success?, said
  end

  def test_classes_signatures_and_the_page_name_the_same_methods
    extension, binding, library = SIGNED
    assert_equal Named.of(Quellix_SUInterface), extension.fetch("Quellix_SUInterface").sort
    page = on_the_page
    assert_equal Named::BINDING.keys.map(&:name).sort, binding.keys.sort
    assert_equal Named::BINDING.keys.map(&:name).sort, page.keys.sort
    Named::BINDING.each do |owner, names|
      assert_equal names, binding[owner.name].uniq.sort, "the signatures of #{owner}"
      assert_equal names, page[owner.name], "the page on #{owner}"
    end
    library.each do |name, methods|
      owner = Object.const_get(name)
      missing = methods.reject { |method| method.start_with?(".") ? owner.respond_to?(method[1..]) : owner.method_defined?(method) }
      assert_empty missing, "#{name} has no such methods"
    end
  end

  def test_the_page_names_what_the_hosts_names_add
    table = Named.added.map { |owner, names| "| `#{owner}` | #{names.map { |name| "`#{name}`" }.join(", ")} |\n" }
    table = "| class | what it adds |\n|---|---|\n#{table.join}"
    marked = /(?<=<!-- names -->\n).*(?=<!-- \/names -->)/m
    page = File.read(PAGE)
    File.write(PAGE, page = page.sub(marked) { table }) if ENV["UPDATE"] == "1"
    assert_equal table, page[marked]
    called = Dir.glob("#{ROOT}/platform/modelhost/ruby/host/*.rb").flat_map { |file| File.read(file).scan(/\bon[A-Z]\w+/) }
    assert_equal called.uniq.sort, page.scan(/\bon[A-Z]\w+/).uniq.sort
  end

  # The binding's own test again, with each call and result compared with its signature; without what
  # hands over wrong objects on purpose.
  def test_the_types_hold_while_the_bindings_test_runs
    said, = Open3.capture2e(
      { "RBS_TEST_TARGET" => "ModelHost,ModelHost::*", "RBS_TEST_LOGLEVEL" => "error",
        "RBS_TEST_OPT" => "-I #{ROOT}/platform/modelhost/ruby" },
      RbConfig.ruby, "-W0", "-I", ENV.fetch("MODELHOST_DIR"), "-rrbs/test/setup", "-r#{__dir__}/open_binding",
      File.join(ROOT, "tests/modelhost/binding_test.rb"), "-e", "/collector|wrong_arguments|of_every_type/"
    )
    assert_match(/^\d{2} runs, \d+ assertions, 0 failures, 0 errors/, said)
  end
end

require "minitest/autorun"
