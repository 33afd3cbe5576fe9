set width 0
set confirm off
set disable-randomization off
set print elements 30
break '(anonymous namespace)::stop'
run
up
echo -- texts\n
print text
print surrogate
print longText
print none
echo -- numbers\n
print numbers
print plain
print packed
print mixed
print boxed
print huge
echo -- containers\n
print array
print dictionary
print fixed
print cyclic
print set
echo -- values\n
print data
print date
print values
print uuid
print error
echo -- references\n
print page
print page.object_->at
print weak
print gone
print nobody
print held
print object
echo -- geometry\n
print rects
print vector
print transforms
print boxedRect
echo -- garbage\n
print bad
print/r none
kill
