# Lengths are inches, angles radians; these read and give other units.
class Numeric
  { m: 1 / 0.0254, cm: 1 / 2.54, mm: 1 / 25.4, km: 1000 / 0.0254, inch: 1.0, feet: 12.0, yard: 36.0, mile: 63_360.0 }
    .each do |unit, inches|
      define_method(unit) { self * inches }
      define_method(:"to_#{unit}") { self / inches }
    end

  def degrees = self * Math::PI / 180.0
  def radians = self * 180.0 / Math::PI
  def to_l = to_f
end
