"""The certificate of a driver packet: the runs that its author would make by hand, made on machines
of the lab, judged, and told in a report."""
