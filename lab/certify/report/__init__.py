"""The report of a certificate: a page, a file for build servers, and the findings themselves."""
