<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: one transaction of an Authorize.Net download, booked as a sales receipt to its
  customer.

  Receives one AuthNetRecord element of the converted download and writes what
  BatchSReceiptFromAuthorizewoCust.xslt writes (date, reference number, addresses, memo with
  the transaction ID, one line for the whole amount), with the customer in front:

      CustomerRef/FullName  Company, first 41 letters, as BatchCustomerFromAuthorize.xslt
                            names the customer it adds (the import puts the first and the last
                            name into an empty Company first). Left out when there is none.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="BatchSReceiptFromAuthorizewoCust.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template name="customer-ref">
    <xsl:variable name="name" select="substring(normalize-space(Company), 1, 41)"/>
    <xsl:if test="$name != ''">
      <CustomerRef><FullName><xsl:value-of select="$name"/></FullName></CustomerRef>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
