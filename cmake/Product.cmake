# The product folder is made here.
