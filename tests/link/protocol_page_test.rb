# docs/protocol.md against the header that both ends are built from: neither says more than the other,
# and the compiler finds every field where the page has it.

require "minitest"
require "open3"

class ProtocolPageTest < Minitest::Test
  SOURCES = File.expand_path("../..", __dir__)
  PAGE = File.read(File.join(SOURCES, "docs/protocol.md"), encoding: "UTF-8")
  HEADER = File.read(File.join(SOURCES, "src/link/WireRecords.h"), encoding: "UTF-8")
  TYPES = { "u8" => "std::uint8_t", "u32" => "std::uint32_t", "u64" => "std::uint64_t", "i32" => "std::int32_t",
            "f32" => "float", "mutex" => "boost::interprocess::interprocess_mutex",
            "condition" => "boost::interprocess::interprocess_condition" }.freeze

  Record = Struct.new(:name, :size, :rows)

  def section(title) = PAGE[/^## #{title}\n.*?(?=^## |\z)/m]

  def records
    PAGE.scan(/^#### `(\w+)`: (\d+) bytes\n\n((?:\|.*\n)+)/).map do |name, size, table|
      rows = table.lines.drop(2).map { |line| line.split("|").map(&:strip).drop(1) }
      Record.new(name, size, rows.map { |offset, type, field, meaning| [offset, type, field.delete("`"), meaning] })
    end
  end

  def page_values(title) = section(title).scan(/^\| (\d+) \| `(\w+)` \|/).to_h { |number, name| [name, number.to_i] }

  def header_values(enumeration)
    body = HEADER[/^enum class #{enumeration} : std::uint32_t \{\n(.*?)^\};/m, 1]
    body.lines.to_h do |line|
      assert_match(/\A  \w+ = \d+,\n\z/, line)
      line.scan(/\w+/).then { |name, number| [name, number.to_i] }
    end
  end

  def test_names_commands_and_requests
    assert_equal HEADER.scan(/^inline constexpr char k\w+\[\] = "(\w+)";/).flatten.sort,
                 section("Names").scan(/^\| `(\w+)` \|/).flatten.sort
    bytes = HEADER[/kEventSegmentBytes = (\d+);/, 1]
    assert_includes section("Names"), "#{bytes.sub(/(?=\d{3}\z)/, ",")} bytes of its own"
    assert_equal header_values("CommandId"), page_values("Commands")
    assert_equal header_values("RequestCode"), page_values("Requests")
  end

  def test_every_record_has_the_fields_of_the_header
    assert_equal PAGE.scan(/^#### /).size, records.size, "each heading of a record is followed by its table"
    structs = HEADER.scan(/^struct (\w+) \{\n(.*?)^\};/m).to_h do |name, body|
      body.lines.each { |line| assert_match(/\A  [\w:]+ \w+(\[\d+\])?;\n\z/, line, name) }
      [name, body.scan(/(\w+)(?:\[\d+\])?;/).flatten]
    end
    assert_equal HEADER.scan(/\bstruct \w+/).size, structs.size
    assert_equal structs, records.to_h { |record| [record.name, record.rows.map { |row| row[2] }] }
  end

  def test_the_compiler_agrees
    checks = records.flat_map do |record|
      type = "quellix::wire::#{record.name}"
      ["static_assert(sizeof(#{type}) == #{record.size});"] + record.rows.flat_map do |offset, field_type, field, _|
        plain, count = field_type.split(" × ")
        declared = "#{TYPES.fetch(plain) { |other| other == "char" ? other : "quellix::wire::#{other}" }}#{"[#{count}]" if count}"
        ["static_assert(offsetof(#{type}, #{field}) == #{offset});",
         "static_assert(std::is_same_v<decltype(#{type}::#{field}), #{declared}>);"]
      end
    end
    assert_operator checks.size, :>, 300
    program = ["#include <type_traits>", '#include "link/WireRecords.h"', *checks].join("\n")
    command = [ENV.fetch("CXX_COMPILER"), "-std=c++20", "-fsyntax-only", "-I", File.join(SOURCES, "src"), "-xc++", "-"]
    output, status = Open3.capture2e(*command, stdin_data: program)
    assert status.success?, output
  end

  # What stands in a record's first word is the number of a command that has this record.
  def test_the_ids_in_the_records
    rows = section("Commands").scan(/^\| (\d+) \| `\w+` \| `(\w+)`/)
    ids = rows.group_by(&:last).transform_values { |pairs| pairs.map(&:first) }
    records.each do |record|
      row = record.rows.find { |_, _, field, _| field == "id" } or next
      next if record.name == "CommandOnly"
      assert_equal ids.fetch(record.name), row.last.scan(/\d+/), record.name
    end
    assert_equal [], ids.keys - records.map(&:name)
  end
end

require "minitest/autorun"
