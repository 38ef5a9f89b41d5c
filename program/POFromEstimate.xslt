<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: an estimate (quote) from another company, booked as a purchase order to it.

  Receives the EstimateRet of an exchange file (the sender's CompanyRet somewhere below it)
  and writes the qbXML 1.1 message that adds the purchase order, without declaration and
  DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><PurchaseOrderAddRq requestID="1">
    <PurchaseOrderAdd>
      VendorRef/FullName   the sender's CompanyRet/CompanyName (first 41 letters); the import
                           overwrites CompanyName beforehand when the user picked a vendor
      TxnDate, RefNumber (the estimate number)
      VendorAddress        the sender's address
      ShipAddress          the address the estimate was made out to (the receiver's)
      TermsRef/FullName    the sender's terms, repointed by the import settings
      DueDate, FOB, Memo (the estimate's memo and its P.O. number)
      PurchaseOrderLineAdd one per estimate line: ItemRef/FullName (repointed by the import
                           settings), Desc, Quantity, Rate, Amount; a subtotal line names the
                           item "Subtotal" and carries no amount
      PurchaseOrderLineGroupAdd  one per group line: ItemGroupRef/FullName, Quantity
      PurchaseOrderLineAdd the estimate's sales tax, when there is any: ItemRef/FullName = the
                           sender's tax item, Desc "Sales Tax", Amount
    </PurchaseOrderAdd></PurchaseOrderAddRq></QBXMLMsgsRq></QBXML>
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="BillFromInvoice.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template match="EstimateRet">
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <PurchaseOrderAddRq requestID="1">
          <PurchaseOrderAdd>
            <xsl:call-template name="vendor-ref"><xsl:with-param name="element">VendorRef</xsl:with-param></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="TxnDate"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="RefNumber"/></xsl:call-template>
            <xsl:variable name="company" select="(.//CompanyRet)[1]"/>
            <xsl:call-template name="address">
              <xsl:with-param name="element">VendorAddress</xsl:with-param>
              <xsl:with-param name="address" select="($company/CompanyAddressForCustomer[*[normalize-space(.) != '']]
                                                      | $company/Address[*[normalize-space(.) != '']])[last()]"/>
            </xsl:call-template>
            <xsl:call-template name="address">
              <xsl:with-param name="element">ShipAddress</xsl:with-param>
              <xsl:with-param name="address" select="(BillAddress[*[normalize-space(.) != '']]
                                                      | ShipAddress[*[normalize-space(.) != '']])[last()]"/>
            </xsl:call-template>
            <xsl:call-template name="ref"><xsl:with-param name="element">TermsRef</xsl:with-param><xsl:with-param name="name" select="TermsRef/FullName"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="DueDate"/></xsl:call-template>
            <xsl:call-template name="copy-text"><xsl:with-param name="node" select="FOB"/></xsl:call-template>
            <xsl:call-template name="memo">
              <xsl:with-param name="extra-label">P.O. No. </xsl:with-param>
              <xsl:with-param name="extra" select="PONumber"/>
            </xsl:call-template>
            <xsl:apply-templates mode="po-line" select="EstimateLineRet | EstimateLineGroupRet"/>
            <xsl:call-template name="tax-line"><xsl:with-param name="line">PurchaseOrderLineAdd</xsl:with-param></xsl:call-template>
          </PurchaseOrderAdd>
        </PurchaseOrderAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- An address as qbXML 1.1 holds one: three lines, city, state, code, country. -->
  <xsl:template name="address">
    <xsl:param name="element"/>
    <xsl:param name="address"/>
    <xsl:if test="$address">
      <xsl:element name="{$element}">
        <xsl:for-each select="$address/Addr1 | $address/Addr2 | $address/Addr3 | $address/City
                              | $address/State | $address/PostalCode | $address/Country">
          <xsl:if test="normalize-space(.) != ''">
            <xsl:element name="{local-name()}"><xsl:value-of select="."/></xsl:element>
          </xsl:if>
        </xsl:for-each>
      </xsl:element>
    </xsl:if>
  </xsl:template>

  <xsl:template mode="po-line" match="EstimateLineRet">
    <PurchaseOrderLineAdd>
      <xsl:choose>
        <xsl:when test="boolean(self::*[Amount and not(Quantity) and not(Rate) and not(RatePercent)
                        and contains(translate(concat(ItemRef/FullName, ' ', Desc), 'SUBTOAL', 'subtoal'), 'subtotal')])">
          <ItemRef><FullName>Subtotal</FullName></ItemRef>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Desc"/></xsl:call-template>
        </xsl:when>
        <xsl:otherwise>
          <xsl:call-template name="ref"><xsl:with-param name="element">ItemRef</xsl:with-param><xsl:with-param name="name" select="ItemRef/FullName"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Desc"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Quantity"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Rate"/></xsl:call-template>
          <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Amount"/></xsl:call-template>
        </xsl:otherwise>
      </xsl:choose>
    </PurchaseOrderLineAdd>
  </xsl:template>

  <xsl:template mode="po-line" match="EstimateLineGroupRet">
    <PurchaseOrderLineGroupAdd>
      <ItemGroupRef><FullName><xsl:value-of select="ItemGroupRef/FullName"/></FullName></ItemGroupRef>
      <xsl:call-template name="copy-text"><xsl:with-param name="node" select="Quantity"/></xsl:call-template>
    </PurchaseOrderLineGroupAdd>
  </xsl:template>

</xsl:stylesheet>
